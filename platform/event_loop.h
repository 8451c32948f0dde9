// The window's events, for the steps that wait for something while the window must stay alive; and
// the request to end the program, which ends every such wait.
#pragma once

namespace ostrel {

class EventLoop {
 public:
  virtual ~EventLoop() = default;

  /// Processes what is pending and returns; does not wait. The operator's actions run inside it.
  /// Throws StopRequested when the program is asked to end.
  virtual void ProcessPendingEvents() = 0;

  /// Asks the program to end: from now on waits and sleeps throw StopRequested.
  virtual void RequestStop() = 0;
  virtual bool StopIsRequested() const = 0;
  /// The shutdown has begun: waits and sleeps are plain again, so that its own steps can retry.
  virtual void BeginShutdown() = 0;
};

}  // namespace ostrel
