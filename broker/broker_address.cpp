#include "broker/broker_address.h"

#include <regex>
#include <stdexcept>

namespace ostrel {

BrokerAddress ParseBrokerAddress(const std::string& text) {
  static const std::regex form(
      "mqtt(s?)://(?:([^:@/]+)(?::([^@/]*))?@)?([^:/@]+)(?::([0-9]{1,5}))?/([^#+]*[^#+/])");
  std::smatch part;
  if (text.size() > 1000 || !std::regex_match(text, part, form)) {
    // There may be a password in it: it is not repeated.
    throw std::runtime_error("The address is no mqtt[s]://[USER:PASSWORD@]HOST[:PORT]/TOPIC.");
  }
  const bool isEncrypted = part[1].length() > 0;
  BrokerAddress address{.user = part[2],
                        .password = part[3],
                        .host = part[4],
                        .topic = part[6],
                        .port = isEncrypted ? 8883 : 1883,
                        .isEncrypted = isEncrypted};
  if (part[5].matched) address.port = std::stoi(part[5]);
  if (address.port < 1 || address.port > 65535)
    throw std::runtime_error("The address names no port.");
  return address;
}

}  // namespace ostrel
