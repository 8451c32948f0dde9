// Time that moves only when someone sleeps or steps it. With it come the things that happen in the
// world outside at set moments: a file is dropped, a device is pulled, a signal arrives.
#pragma once

#include <functional>
#include <map>
#include <vector>

#include "platform/clock.h"

namespace ostrel {

/// From `from` on, local time is UTC plus `offset`.
struct ZoneRule {
  UtcTime from;
  seconds offset;
};

class VirtualClock : public Clock {
 public:
  /// Starts at `start` in a zone with the given rules, in order; the first also holds before
  /// itself.
  explicit VirtualClock(UtcTime start, std::vector<ZoneRule> zone = {{UtcTime{}, seconds(0)}})
      : utc_(start), zone_(std::move(zone)) {}

  LocalTime Now() const override { return ToLocal(utc_); }
  UtcTime UtcNow() const override { return utc_; }
  milliseconds Monotonic() const override { return monotonic_; }
  seconds UtcOffset() const override { return OffsetAt(utc_); }
  LocalTime ToLocal(UtcTime utc) const override;
  void Sleep(milliseconds duration) override;

  /// Lets time pass, without the stop ending it.
  void Advance(milliseconds duration);
  /// Sets the wall clock by `step`; monotonic time does not notice.
  void StepWallClock(milliseconds step) { utc_ += step; }
  /// `event` happens in the outside world at the monotonic time `at`, also while the thread sleeps.
  void At(milliseconds at, std::function<void()> event) { world_.emplace(at, std::move(event)); }

  bool stopRequested = false;
  bool shutdownBegun = false;
  /// True when a wait must end: requested, and the shutdown not yet begun.
  bool EndsWaits() const { return stopRequested && !shutdownBegun; }

 private:
  seconds OffsetAt(UtcTime utc) const;

  UtcTime utc_;
  milliseconds monotonic_{0};
  std::vector<ZoneRule> zone_;
  std::multimap<milliseconds, std::function<void()>> world_;
};

}  // namespace ostrel
