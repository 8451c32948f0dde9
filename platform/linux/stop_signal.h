// The request to end the program: a signal from the system, or the operator's wish. Whoever waits,
// waits on its descriptor as well.
#pragma once

#include <atomic>

#include "platform/linux/descriptor.h"

namespace ostrel {

/// One at a time in a process: it owns the handlers of SIGTERM, SIGINT and SIGHUP while it lives
/// (a SIGHUP that was ignored from the start, as under nohup, stays ignored). SIGPIPE and
/// SIGXFSZ, of a write that may not be, do nothing, and the write fails; programs started from here
/// get their usual meaning back.
class StopSignal {
 public:
  StopSignal();
  ~StopSignal();
  StopSignal(const StopSignal&) = delete;
  StopSignal& operator=(const StopSignal&) = delete;

  /// Safe in a signal handler.
  void RequestStop();
  bool IsRequested() const { return requested_; }

  /// From now on waits are plain again: the shutdown's own steps can sleep and retry.
  void BeginShutdown() { shuttingDown_ = true; }
  /// True when a wait must end: requested, and the shutdown not yet begun.
  bool EndsWaits() const { return requested_ && !shuttingDown_; }

  /// Readable from the request on, for ever.
  int Descriptor() const { return event_.Get(); }

 private:
  ostrel::Descriptor event_;
  std::atomic<bool> requested_{false};
  bool shuttingDown_ = false;
};

}  // namespace ostrel
