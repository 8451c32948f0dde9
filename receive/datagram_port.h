// Where datagrams are heard, and from whom. Nothing of what they say.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "receive/line.h"

namespace ostrel {

/// An IPv4 address as a number, its first part the highest byte.
using Ipv4 = std::uint32_t;

/// Nothing for what is no address in four decimal numbers.
std::optional<Ipv4> ReadIpv4(const std::string& text);
std::string SpellIpv4(Ipv4 address);
/// True for an address of this computer alone: 127.0.0.0/8.
bool IsLoopback(Ipv4 address);

/// Addresses with the same first bits: "192.168.1.0/24", or one address.
struct Ipv4Network {
  Ipv4 address = 0, mask = 0;
  bool Holds(Ipv4 other) const { return ((address ^ other) & mask) == 0; }
};
std::optional<Ipv4Network> ReadIpv4Network(const std::string& text);
std::string SpellIpv4Network(const Ipv4Network& network);

/// An address of this computer and a port. 0.0.0.0 is all of its addresses.
struct DatagramAddress {
  std::string address = "127.0.0.1";
  int port = 0;
};

/// Reads "[ADDRESS:]PORT". Throws std::runtime_error.
DatagramAddress ReadDatagramAddress(const std::string& where);

struct Datagram {
  std::string_view bytes = {};
  Ipv4 sender = 0;
};

class DatagramPort {
 public:
  /// Hears what is sent to that address and port; at 127.0.0.1 what is sent to 127.255.255.255
  /// too, as a station sends it unless told otherwise. Throws std::system_error.
  explicit DatagramPort(const DatagramAddress& where);

  /// The next one, read into `buffer` without waiting; what is longer is cut. Throws
  /// std::system_error when it cannot be read.
  std::optional<Datagram> Next(std::span<char> buffer);
  /// For poll: ready to be read when there is a next one.
  const OpenFile& Readiness() const { return readiness_; }

 private:
  void Listen(Ipv4 address, const DatagramAddress& where);

  OpenFile readiness_;
  std::vector<OpenFile> sockets_;
};

}  // namespace ostrel
