// Time as the machine gives it. Calendars go by the wall clock, pacing by the monotonic one.
#pragma once

#include <functional>
#include <utility>

#include "base/time.h"

namespace ostrel {

class Clock {
 public:
  virtual ~Clock() = default;

  /// Local wall time of now, to the millisecond.
  virtual LocalTime Now() const = 0;
  /// UTC of now.
  virtual UtcTime UtcNow() const = 0;
  /// Time since some fixed moment; no step of the wall clock moves it.
  virtual milliseconds Monotonic() const = 0;
  /// The present offset of local time from UTC (local - UTC).
  virtual seconds UtcOffset() const = 0;
  /// The local time that `utc` was or will be, by the offset in force at that moment.
  virtual LocalTime ToLocal(UtcTime utc) const = 0;

  /// Blocks the thread; no window event is processed. Throws StopRequested at once when the program
  /// is asked to end, before or during the sleep; during the shutdown itself it sleeps plainly.
  virtual void Sleep(milliseconds duration) = 0;
  /// Throws StopRequested where a sleep would, and takes no time.
  void CheckStop() { Sleep(milliseconds(0)); }

  /// `call` hears of each sleep before it begins, and how long it may last: who sleeps by a rule of
  /// the station is not hanging.
  void OnSleep(std::function<void(milliseconds)> call) { onSleep_ = std::move(call); }

 protected:
  void TellOfSleep(milliseconds duration) const {
    if (onSleep_) onSleep_(duration);
  }

 private:
  std::function<void(milliseconds)> onSleep_;
};

}  // namespace ostrel
