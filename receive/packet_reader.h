// One packet as a receiver sees it: 1116 bytes taken apart and every field checked. Written from
// docs/packet-format.md alone, so that it can bear witness against the side that builds packets.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

constexpr std::size_t kReceivedZeros = 6;
constexpr std::size_t kReceivedHeader = 80;
constexpr std::size_t kReceivedBlock = 1024;
constexpr std::size_t kReceivedPacket = kReceivedZeros + kReceivedHeader + kReceivedBlock + 6;
static_assert(kReceivedPacket == 1116);

/// The fields of a packet without their padding. `stamp` is the date field as it stands (UTC).
struct ReceivedPacket {
  std::string name;
  int block = 0;
  int count = 0;
  std::string stamp;
  std::string data;
};

/// A packet and what is wrong with it, in an operator's words; nothing wrong when empty. Fields
/// that could not be read are empty or 0.
struct PacketReading {
  ReceivedPacket packet;
  std::vector<std::string> problems;
};

/// Takes exactly kReceivedPacket bytes apart.
PacketReading ReadPacket(std::string_view bytes);

/// How many of the six marks ("/PF", "/PN", "/PT", "/CS", "/FD", CR LF) stand at their places in
/// `header`, which begins with "/PF". Places beyond its end do not count.
int CountHeaderMarks(std::string_view header);
constexpr int kHeaderMarks = 6;

}  // namespace ostrel
