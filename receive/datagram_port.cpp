#include "receive/datagram_port.h"

#include <arpa/inet.h>
#include <bit>
#include <cerrno>
#include <charconv>
#include <fmt/format.h>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <system_error>

namespace ostrel {
namespace {

constexpr Ipv4 kLoopbackBroadcast = 0x7FFFFFFF;
constexpr int kLargestPort = 65'535;

[[noreturn]] void Fail(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

std::optional<int> ReadNumber(std::string_view text) {
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

}  // namespace

std::optional<Ipv4> ReadIpv4(const std::string& text) {
  in_addr address{};
  if (inet_pton(AF_INET, text.c_str(), &address) != 1) return std::nullopt;
  return ntohl(address.s_addr);
}

std::string SpellIpv4(Ipv4 address) {
  return fmt::format("{}.{}.{}.{}", address >> 24, address >> 16 & 0xFF, address >> 8 & 0xFF,
                     address & 0xFF);
}

bool IsLoopback(Ipv4 address) {
  return address >> 24 == 127;
}

std::optional<Ipv4Network> ReadIpv4Network(const std::string& text) {
  constexpr int kBits = 32;
  const auto slash = text.find('/');
  const auto address = ReadIpv4(text.substr(0, slash));
  const auto bits = slash == text.npos ? kBits : ReadNumber(text.substr(slash + 1)).value_or(-1);
  if (!address || bits < 0 || bits > kBits) return std::nullopt;
  return Ipv4Network{*address, bits == 0 ? 0 : ~Ipv4{0} << (kBits - bits)};
}

std::string SpellIpv4Network(const Ipv4Network& network) {
  const auto address = SpellIpv4(network.address);
  return ~network.mask == 0 ? address : fmt::format("{}/{}", address, std::popcount(network.mask));
}

DatagramAddress ReadDatagramAddress(const std::string& where) {
  DatagramAddress read;
  const auto colon = where.rfind(':');
  if (colon != where.npos) read.address = where.substr(0, colon);
  read.port = ReadNumber(where.substr(colon == where.npos ? 0 : colon + 1)).value_or(0);
  if (!ReadIpv4(read.address) || read.port < 1 || read.port > kLargestPort)
    throw std::runtime_error(fmt::format("\"{}\" is no [ADDRESS:]PORT.", where));
  return read;
}

DatagramPort::DatagramPort(const DatagramAddress& where)
    : readiness_(epoll_create1(EPOLL_CLOEXEC)) {
  if (readiness_.Get() < 0) Fail("cannot listen for datagrams");
  const auto address = ReadIpv4(where.address).value();
  Listen(address, where);
  if (address == INADDR_LOOPBACK) Listen(kLoopbackBroadcast, where);
}

void DatagramPort::Listen(Ipv4 address, const DatagramAddress& where) {
  const auto check = [&](int result) {
    if (result < 0)
      Fail(fmt::format("cannot listen for datagrams to {} port {}", where.address, where.port));
  };
  OpenFile opened(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  check(opened.Get());
  sockaddr_in bound{};
  bound.sin_family = AF_INET;
  bound.sin_addr.s_addr = htonl(address);
  bound.sin_port = htons(static_cast<std::uint16_t>(where.port));
  check(bind(opened.Get(), reinterpret_cast<const sockaddr*>(&bound), sizeof bound));
  epoll_event event{.events = EPOLLIN, .data = {}};
  check(epoll_ctl(readiness_.Get(), EPOLL_CTL_ADD, opened.Get(), &event));
  sockets_.push_back(std::move(opened));
}

std::optional<Datagram> DatagramPort::Next(std::span<char> buffer) {
  for (const auto& one : sockets_) {
    sockaddr_in sender{};
    socklen_t length = sizeof sender;
    const auto size = recvfrom(one.Get(), buffer.data(), buffer.size(), 0,
                               reinterpret_cast<sockaddr*>(&sender), &length);
    if (size >= 0)
      return Datagram{{buffer.data(), static_cast<std::size_t>(size)},
                      ntohl(sender.sin_addr.s_addr)};
    if (errno != EAGAIN && errno != EINTR) Fail("datagrams cannot be read");
  }
  return std::nullopt;
}

}  // namespace ostrel
