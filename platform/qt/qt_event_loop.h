// The window's events for the steps that wait, and the request to end the program. The request
// itself is kept where the signals set it (platform/linux/stop_signal.h); the exception that ends a
// wait is thrown here, behind Qt's event dispatch, never through it.
#pragma once

#include "platform/event_loop.h"
#include "platform/linux/stop_signal.h"

namespace ostrel {

class QtEventLoop : public EventLoop {
 public:
  explicit QtEventLoop(StopSignal& stop) : stop_(stop) {}

  void ProcessPendingEvents() override;
  void RequestStop() override;
  bool StopIsRequested() const override;
  void BeginShutdown() override;

 private:
  StopSignal& stop_;
};

}  // namespace ostrel
