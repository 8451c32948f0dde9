// The machine's clocks and its sleep.
#pragma once

#include "platform/clock.h"
#include "platform/linux/stop_signal.h"

namespace ostrel {

/// Local time follows the system's time zone, a change of it while the program runs included.
class LinuxClock : public Clock {
 public:
  /// Of a program that ends at once when it is asked to: nothing ends a sleep.
  LinuxClock() = default;
  /// Of a program that unwinds first: `stop` ends its sleeps.
  explicit LinuxClock(StopSignal& stop) : stop_(&stop) {}

  LocalTime Now() const override { return ToLocal(UtcNow()); }
  UtcTime UtcNow() const override;
  milliseconds Monotonic() const override;
  seconds UtcOffset() const override;
  LocalTime ToLocal(UtcTime utc) const override;
  void Sleep(milliseconds duration) override;

 private:
  StopSignal* stop_ = nullptr;
};

}  // namespace ostrel
