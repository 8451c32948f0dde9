#include "platform/virtual/virtual_clock.h"

#include <algorithm>

#include "base/failure.h"

namespace ostrel {

seconds VirtualClock::OffsetAt(UtcTime utc) const {
  auto offset = zone_.front().offset;
  for (const auto& rule : zone_) {
    if (utc >= rule.from) offset = rule.offset;
  }
  return offset;
}

LocalTime VirtualClock::ToLocal(UtcTime utc) const {
  return LocalTime(utc.time_since_epoch() + OffsetAt(utc));
}

void VirtualClock::Sleep(milliseconds duration) {
  if (EndsWaits()) throw StopRequested();
  TellOfSleep(duration);
  const auto end = monotonic_ + duration;
  while (monotonic_ < end) {
    const auto next = world_.empty() ? end : std::clamp(world_.begin()->first, monotonic_, end);
    Advance(next - monotonic_);
    if (EndsWaits()) throw StopRequested();
    if (next == end) return;
  }
}

void VirtualClock::Advance(milliseconds duration) {
  const auto end = monotonic_ + duration;
  const auto moveTo = [this](milliseconds moment) {
    utc_ += moment - monotonic_;
    monotonic_ = moment;
  };
  while (!world_.empty() && world_.begin()->first <= end) {
    moveTo(std::max(monotonic_, world_.begin()->first));
    const auto event = std::move(world_.begin()->second);
    world_.erase(world_.begin());
    event();
  }
  moveTo(end);
}

}  // namespace ostrel
