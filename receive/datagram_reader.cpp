#include "receive/datagram_reader.h"

#include <utility>

namespace ostrel {
namespace {

constexpr std::string_view kPacketMark = "R00";
constexpr std::size_t kSequenceDigits = 2;
constexpr std::size_t kPrefix = kPacketMark.size() + kSequenceDigits;

bool IsPacketDatagram(std::string_view datagram) {
  if (datagram.size() != kPrefix + kReceivedPacket || !datagram.starts_with(kPacketMark)) {
    return false;
  }
  const std::string_view sequence = datagram.substr(kPacketMark.size(), kSequenceDigits);
  return sequence.find_first_not_of("0123456789") == std::string_view::npos;
}

}  // namespace

std::optional<StreamEvent> ReadDatagram(std::string_view datagram) {
  if (datagram == "E0000") return std::nullopt;
  if (!IsPacketDatagram(datagram)) return Noise{datagram.size()};
  PacketReading reading = ReadPacket(datagram.substr(kPrefix));
  if (reading.problems.empty()) return std::move(reading.packet);
  return DamagedPacket{std::move(reading)};
}

}  // namespace ostrel
