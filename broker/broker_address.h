// Where an MQTT broker listens, and which of its topics is meant.
#pragma once

#include <string>

namespace ostrel {

struct BrokerAddress {
  std::string user = {}, password = {}, host = {}, topic = {};
  int port = 1883;
};

/// Takes "mqtt://[USER:PASSWORD@]HOST[:PORT]/TOPIC" apart; the topic has no wildcards and no
/// separator at its end. Throws std::runtime_error for any other text.
BrokerAddress ParseBrokerAddress(const std::string& text);

}  // namespace ostrel
