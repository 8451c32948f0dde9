// Where an MQTT broker listens, and which of its topics is meant.
#pragma once

#include <string>

namespace ostrel {

struct BrokerAddress {
  std::string user = {}, password = {}, host = {}, topic = {};
  int port = 0;
  bool isEncrypted = false;  // by TLS
};

/// Takes "mqtt[s]://[USER:PASSWORD@]HOST[:PORT]/TOPIC" apart: "mqtts" for an encrypted connection,
/// and the port 1883 or 8883 unless told. The topic has no wildcards and no separator at its end.
/// Throws std::runtime_error for any other text.
BrokerAddress ParseBrokerAddress(const std::string& text);

}  // namespace ostrel
