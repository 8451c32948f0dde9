// Where a server listens: "[ADDRESS:]PORT" made a socket.
#pragma once

#include <string>

namespace ostrel {

struct ListeningSocket {
  int descriptor;
  bool isIpv6;
  std::string place;  // "127.0.0.1:8080", with the port that it has got
};

/// On 127.0.0.1 unless an address or a name is given, an IPv6 address in brackets; port 0 is any
/// free one. The caller owns the descriptor. Throws std::runtime_error with a text for the
/// operator.
ListeningSocket ListenAt(const std::string& where);

}  // namespace ostrel
