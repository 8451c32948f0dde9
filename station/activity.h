// Every way into the station (a tick, an operator's action, start-up) runs as an activity. An
// operator's action can run inside a tick that waits; when the program is asked to end, the
// innermost wait throws, everything unwinds, and the outermost activity runs the shutdown.
#pragma once

#include <functional>
#include <utility>

#include "base/failure.h"
#include "base/scope_guard.h"
#include "platform/event_loop.h"

namespace ostrel {

class Activity {
 public:
  /// `shutDown` runs once, after the last activity has unwound.
  Activity(EventLoop& events, std::function<void()> shutDown)
      : events_(events), shutDown_(std::move(shutDown)) {}

  /// Runs `action`. Once the program is asked to end, nothing is begun any more.
  template <typename Action>
  void Run(Action&& action) {
    if (!events_.StopIsRequested()) {
      ++depth_;
      const ScopeGuard leave([this] { --depth_; });
      try {
        std::forward<Action>(action)();
      } catch (const StopRequested&) {
        // The shutdown below, or that of the activity around this one, is the answer.
      }
    }
    EndIfAsked();
  }

  /// Asks the program to end: at once when nothing runs, else as soon as what runs has unwound.
  void RequestStop() {
    events_.RequestStop();
    EndIfAsked();
  }

 private:
  void EndIfAsked() {
    if (depth_ > 0 || !events_.StopIsRequested() || std::exchange(ended_, true)) return;
    events_.BeginShutdown();
    shutDown_();
  }

  EventLoop& events_;
  std::function<void()> shutDown_;
  int depth_ = 0;
  bool ended_ = false;
};

}  // namespace ostrel
