// Notices when the wall clock is set, or local time changes to or from daylight saving: no transmit
// period and no pause may be stretched by that.
#pragma once

#include "platform/clock.h"

namespace ostrel {

class ClockStepWatch {
 public:
  explicit ClockStepWatch(const Clock& clock) : clock_(clock), difference_(Difference()) {}

  /// By how much the wall clock has stepped against the monotonic one since the last call; 0 for
  /// two seconds or less, which is drift.
  milliseconds TakeStep() {
    const auto before = difference_;
    difference_ = Difference();
    const auto step = difference_ - before;
    return std::chrono::abs(step) > kDrift ? step : milliseconds(0);
  }

 private:
  static constexpr milliseconds kDrift{2000};

  milliseconds Difference() const { return clock_.Now().time_since_epoch() - clock_.Monotonic(); }

  const Clock& clock_;
  milliseconds difference_;
};

}  // namespace ostrel
