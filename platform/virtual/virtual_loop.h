// The one thread of a virtual machine: its timers, and the operator, whose actions happen when
// window events are processed.
#pragma once

#include <functional>
#include <map>
#include <vector>

#include "platform/event_loop.h"
#include "platform/timer.h"
#include "platform/virtual/virtual_clock.h"

namespace ostrel {

class VirtualLoop;

class VirtualTimer : public Timer {
 public:
  explicit VirtualTimer(VirtualLoop& loop);
  void OnTick(std::function<void()> call) override { call_ = std::move(call); }
  void Start(milliseconds interval) override;
  void Stop() override { isRunning_ = false; }
  bool IsRunning() const override { return isRunning_; }

 private:
  friend class VirtualLoop;
  void Fire();

  VirtualLoop& loop_;
  std::function<void()> call_;
  milliseconds interval_{0};
  milliseconds due_{0};
  bool isRunning_ = false;
};

class VirtualLoop : public EventLoop {
 public:
  explicit VirtualLoop(VirtualClock& clock) : clock_(clock) {}

  void ProcessPendingEvents() override;
  void RequestStop() override { clock_.stopRequested = true; }
  bool StopIsRequested() const override { return clock_.stopRequested; }
  void BeginShutdown() override { clock_.shutdownBegun = true; }

  /// The operator does something at the monotonic time `at`, or as soon after as events are
  /// processed.
  void OperatorAt(milliseconds at, std::function<void()> action) {
    operator_.emplace(at, std::move(action));
  }
  /// Runs timers and operator for `duration` of virtual time.
  void RunFor(milliseconds duration);
  /// Until `done` says so, asked after every event; false when `limit` passed first.
  bool RunUntil(const std::function<bool()>& done, milliseconds limit);

 private:
  friend class VirtualTimer;
  /// Moves to the next thing that is due by `end` and lets it happen; false when there is none.
  bool RunNext(milliseconds end);
  bool RunOperatorAction();

  VirtualClock& clock_;
  std::vector<VirtualTimer*> timers_;
  std::multimap<milliseconds, std::function<void()>> operator_;
};

}  // namespace ostrel
