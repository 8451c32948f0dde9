#include "platform/virtual/virtual_line.h"

#include <algorithm>
#include <utility>

#include "base/failure.h"

namespace ostrel {

namespace {
constexpr std::size_t kBufferSize = 10000;
}

void VirtualLine::Open(int number, std::string_view settings) {
  if (!devices.contains(number) || !isPresent_)
    throw Failure(failure_number::kDeviceUnavailable, "Device unavailable");
  line_ = LineTime(ParseLineSettings(settings));
  openings.emplace_back(settings);
  isOpen_ = true;
}

void VirtualLine::Close() {
  Record(1, keyLine1_, false);
  Record(2, keyLine2_, false);
  line_.Clear();
  held_.clear();
  isOpen_ = false;
}

/// Counts what the real port's guard would have done.
void VirtualLine::Beat(milliseconds silence) {
  if (isOpen_ && (keyLine1_ || keyLine2_) && clock_.Monotonic() > awaited_) ++releases;
  const auto idleAt = std::chrono::ceil<milliseconds>(line_.IdleAt());
  awaited_ = std::max(idleAt, clock_.Monotonic()) + silence + kGuardPatience;
}

std::size_t VirtualLine::BytesWaiting() {
  Beat();
  if (!isOpen_) return 0;
  return isPresent_ ? line_.Unsent(Now()) : kBufferSize;
}

void VirtualLine::Write(std::string_view bytes) {
  if (!isOpen_ || writeFails || line_.Unsent(Now()) + bytes.size() > kBufferSize)
    throw Failure(failure_number::kDeviceError, "Device I/O error");
  if (isPresent_) {
    Carry(bytes);
  } else {
    held_ += bytes;
  }
}

void VirtualLine::Carry(std::string_view bytes) {
  line_.Add(bytes.size(), Now());
  Beat();
  onWrite(bytes);
}

void VirtualLine::SetLine(int line, bool& state, bool on) {
  Beat();
  if (isOpen_ && lineFails) throw Failure(failure_number::kDeviceError, "Device I/O error");
  Record(line, state, on);
}

void VirtualLine::Record(int line, bool& state, bool on) {
  if (isOpen_ && state != on) keying.push_back({clock_.Monotonic(), line, on});
  state = on;
}

void VirtualLine::SetPresent(bool present) {
  if (std::exchange(isPresent_, present) == present || !isOpen_) return;
  line_.Clear();
  if (present) Carry(std::exchange(held_, {}));
  if (onNews_) onNews_({present ? PortEvent::kReturned : PortEvent::kVanished});
}

}  // namespace ostrel
