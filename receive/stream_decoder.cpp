#include "receive/stream_decoder.h"

#include <algorithm>
#include <utility>

namespace ostrel {
namespace {

constexpr std::string_view kPauseText = "Transmit Timeout";

// A packet is recognised by most of its marks rather than by its first bytes, so that one damaged
// or lost byte costs no more than the packet it hit.
constexpr int kMarksEnough = 4;

std::size_t FindHeader(std::string_view bytes) {
  for (std::size_t at = 0; at + kReceivedHeader <= bytes.size(); ++at) {
    if (CountHeaderMarks(bytes.substr(at, kReceivedHeader)) >= kMarksEnough) return at;
  }
  return std::string_view::npos;
}

}  // namespace

std::vector<StreamEvent> StreamDecoder::Feed(std::string_view bytes) {
  buffer_.append(bytes);
  std::vector<StreamEvent> events;
  while (TakeNext(events)) {
  }
  return events;
}

std::vector<StreamEvent> StreamDecoder::Finish() {
  std::vector<StreamEvent> events;
  DropNoise(buffer_.size(), events);
  return events;
}

bool StreamDecoder::TakeNext(std::vector<StreamEvent>& events) {
  const std::size_t header = FindHeader(buffer_);
  const std::size_t pause = buffer_.find(kPauseText);
  // What is whole first is taken first, so that it does not matter in what pieces the bytes come.
  if (pause != std::string::npos &&
      (header == std::string::npos || pause + kPauseText.size() < header + kReceivedHeader)) {
    DropNoise(pause, events);
    remains_ -= std::min(remains_, kPauseText.size());
    buffer_.erase(0, kPauseText.size());
    events.emplace_back(PauseText{});
    return true;
  }
  if (header == std::string::npos) {
    constexpr std::size_t kMayBegin = kReceivedZeros + kReceivedHeader - 1;
    Drop(buffer_.size() - std::min(buffer_.size(), kMayBegin));
    return false;
  }
  const std::size_t lead = std::min(header, kReceivedZeros);
  DropNoise(header - lead, events);
  if (buffer_.size() < lead + kReceivedPacket - kReceivedZeros) return false;
  TakePacket(lead, events);
  return true;
}

// `lead` is how many of the bytes in front of the header are there at all; the others do not pass
// for zeros.
void StreamDecoder::TakePacket(std::size_t lead, std::vector<StreamEvent>& events) {
  const std::size_t size = lead + kReceivedPacket - kReceivedZeros;
  PacketReading reading =
      ReadPacket(std::string(kReceivedZeros - lead, '?') + buffer_.substr(0, size));
  if (reading.problems.empty()) {
    buffer_.erase(0, size);
    remains_ = 0;
    events.emplace_back(std::move(reading.packet));
    return;
  }
  // The next packet may begin inside this one's 1116 bytes, so only the mark is passed over.
  const std::size_t passed = lead + 3;
  buffer_.erase(0, passed);
  remains_ = size - passed;
  events.emplace_back(DamagedPacket{std::move(reading)});
}

void StreamDecoder::Drop(std::size_t bytes) {
  const std::size_t ofDamaged = std::min(remains_, bytes);
  remains_ -= ofDamaged;
  noise_ += bytes - ofDamaged;
  buffer_.erase(0, bytes);
}

void StreamDecoder::DropNoise(std::size_t bytes, std::vector<StreamEvent>& events) {
  Drop(bytes);
  if (noise_ > 0) events.emplace_back(Noise{std::exchange(noise_, 0)});
}

}  // namespace ostrel
