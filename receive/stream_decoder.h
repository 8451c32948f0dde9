// Finds packets in a stream of bytes that may begin anywhere, lose bytes, gain noise and pause.
// Knows nothing of devices and files.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "receive/packet_reader.h"

namespace ostrel {

/// A packet with something wrong in it; its data must not be used.
struct DamagedPacket {
  PacketReading reading;
};
/// The text "Transmit Timeout" between packets: the transmitter is about to rest.
struct PauseText {};
/// Bytes that belong to no packet.
struct Noise {
  std::size_t bytes = 0;
};
using StreamEvent = std::variant<ReceivedPacket, DamagedPacket, PauseText, Noise>;

class StreamDecoder {
 public:
  /// Takes the next bytes, in pieces of any size; returns what they completed, in stream order.
  std::vector<StreamEvent> Feed(std::string_view bytes);
  /// The stream has ended: bytes that still waited for the rest of a packet are noise.
  std::vector<StreamEvent> Finish();

 private:
  bool TakeNext(std::vector<StreamEvent>& events);
  void TakePacket(std::size_t lead, std::vector<StreamEvent>& events);
  void Drop(std::size_t bytes);
  void DropNoise(std::size_t bytes, std::vector<StreamEvent>& events);

  std::string buffer_;
  std::size_t noise_ = 0;
  // What is left of a damaged packet is told once, with that packet, and is not noise as well.
  std::size_t remains_ = 0;
};

}  // namespace ostrel
