#include "platform/datagrams.h"

#include <charconv>

#include "base/failure.h"

namespace ostrel {

namespace {

constexpr std::int32_t kHighestPort = 65535;
constexpr unsigned int kHighestByte = 255;

/// A byte in decimal. A zero in front is refused: some read an octal number then.
bool IsAddressPart(std::string_view digits) {
  if (digits.size() > 1 && digits.front() == '0') return false;
  unsigned int byte = 0;
  const auto* const end = digits.data() + digits.size();
  const auto [behind, error] = std::from_chars(digits.data(), end, byte);
  return error == std::errc{} && behind == end && byte <= kHighestByte;
}

bool IsIpv4Address(std::string_view text) {
  int parts = 1;
  for (auto dot = text.find('.'); dot != std::string_view::npos; dot = text.find('.'), ++parts) {
    if (!IsAddressPart(text.substr(0, dot))) return false;
    text.remove_prefix(dot + 1);
  }
  return parts == 4 && IsAddressPart(text);
}

}  // namespace

void CheckDestinationAddress(const std::string& address) {
  if (!IsIpv4Address(address))
    throw Failure(failure_number::kInvalidArgument, "The packet host has no IPv4 address");
}

void CheckDestinationPort(std::int32_t port) {
  if (port < 1 || port > kHighestPort)
    throw Failure(failure_number::kInvalidArgument, "The packet host's port is not 1 to 65535");
}

}  // namespace ostrel
