#include "web/asked_host.h"

#include <algorithm>
#include <arpa/inet.h>

#include "base/text.h"

namespace ostrel {
namespace {

bool IsAddress(const std::string& text) {
  in6_addr address;
  return inet_pton(AF_INET, text.c_str(), &address) == 1 ||
         inet_pton(AF_INET6, text.c_str(), &address) == 1;
}

/// Without the port, and without the brackets of an address.
std::string NameIn(std::string_view host) {
  const auto end = host.find("]:");
  if (host.starts_with('[') && end != std::string_view::npos) host = host.substr(0, end + 1);
  if (host.starts_with('[') && host.ends_with(']'))
    return std::string(host.substr(1, host.size() - 2));
  return ToLower(host.substr(0, host.find(':')));
}

}  // namespace

bool IsMeant(std::string_view host, const std::vector<std::string>& names) {
  const auto name = NameIn(host);
  if (name.empty() || name == "localhost" || IsAddress(name)) return true;
  return std::ranges::any_of(names, [&](const std::string& told) { return ToLower(told) == name; });
}

}  // namespace ostrel
