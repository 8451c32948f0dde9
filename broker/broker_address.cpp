#include "broker/broker_address.h"

#include <regex>
#include <stdexcept>

namespace ostrel {

BrokerAddress ParseBrokerAddress(const std::string& text) {
  static const std::regex form(
      "mqtt://(?:([^:@/]+)(?::([^@/]*))?@)?([^:/@]+)(?::([0-9]{1,5}))?/([^#+]*[^#+/])");
  std::smatch part;
  if (text.size() > 1000 || !std::regex_match(text, part, form)) {
    // There may be a password in it: it is not repeated.
    throw std::runtime_error("The address is no mqtt://[USER:PASSWORD@]HOST[:PORT]/TOPIC.");
  }
  BrokerAddress address{.user = part[1], .password = part[2], .host = part[3], .topic = part[5]};
  if (part[4].matched) address.port = std::stoi(part[4]);
  if (address.port < 1 || address.port > 65535)
    throw std::runtime_error("The address names no port.");
  return address;
}

}  // namespace ostrel
