#include "broker/broker_address.h"

#include <fmt/format.h>
#include <regex>
#include <stdexcept>

namespace ostrel {

BrokerAddress ParseBrokerAddress(const std::string& text) {
  static const std::regex form(
      "mqtt://(?:([^:@/]+)(?::([^@/]*))?@)?([^:/@]+)(?::([0-9]{1,5}))?/([^#+]*[^#+/])");
  std::smatch part;
  if (text.size() > 1000 || !std::regex_match(text, part, form)) {
    throw std::runtime_error(
        fmt::format("\"{}\" is no mqtt://[USER:PASSWORD@]HOST[:PORT]/TOPIC.", text));
  }
  BrokerAddress address{.user = part[1], .password = part[2], .host = part[3], .topic = part[5]};
  if (part[4].matched) address.port = std::stoi(part[4]);
  if (address.port < 1 || address.port > 65535)
    throw std::runtime_error(fmt::format("\"{}\" names no port.", text));
  return address;
}

}  // namespace ostrel
