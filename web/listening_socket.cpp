#include "web/listening_socket.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <fmt/format.h>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace ostrel {

namespace {

struct Place {
  std::string address = "127.0.0.1";
  int port = 0;
};

Place PlaceOf(const std::string& where) {
  Place place;
  const auto colon = where.rfind(':');
  if (colon != std::string::npos) place.address = where.substr(0, colon);
  if (place.address.starts_with('[') && place.address.ends_with(']'))
    place.address = place.address.substr(1, place.address.size() - 2);
  const char* const first = where.data() + (colon == std::string::npos ? 0 : colon + 1);
  const char* const last = where.data() + where.size();
  const auto [end, error] = std::from_chars(first, last, place.port);
  if (error != std::errc() || end != last || place.port < 0 || place.port > 65535)
    throw std::runtime_error(fmt::format("\"{}\" is no [ADDRESS:]PORT.", where));
  return place;
}

[[noreturn]] void Fail(const std::string& where, const char* why) {
  throw std::runtime_error(fmt::format("Nothing can be served at {}: {}.", where, why));
}

int PortOf(int descriptor) {
  sockaddr_storage address{};
  socklen_t size = sizeof address;
  getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size);
  // In both families the port stands at the same place.
  return ntohs(reinterpret_cast<const sockaddr_in&>(address).sin_port);
}

}  // namespace

ListeningSocket ListenAt(const std::string& where) {
  const auto place = PlaceOf(where);
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
  addrinfo* found = nullptr;
  const auto port = std::to_string(place.port);
  if (const int error = getaddrinfo(place.address.c_str(), port.c_str(), &hints, &found))
    Fail(where, gai_strerror(error));
  const std::unique_ptr<addrinfo, void (*)(addrinfo*)> owner(found, freeaddrinfo);
  const int descriptor = socket(found->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (descriptor < 0) Fail(where, std::strerror(errno));
  const int on = 1, off = 0;
  setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  const bool isIpv6 = found->ai_family == AF_INET6;
  if (isIpv6) setsockopt(descriptor, IPPROTO_IPV6, IPV6_V6ONLY, &off, sizeof off);
  if (bind(descriptor, found->ai_addr, found->ai_addrlen) != 0 ||
      listen(descriptor, SOMAXCONN) != 0) {
    const int error = errno;
    close(descriptor);
    Fail(where, std::strerror(error));
  }
  const auto address = isIpv6 ? fmt::format("[{}]", place.address) : place.address;
  return {descriptor, isIpv6, fmt::format("{}:{}", address, PortOf(descriptor))};
}

}  // namespace ostrel
