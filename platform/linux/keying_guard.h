// Sees that the transmitter does not stay keyed when the program hangs. The thread that keys may be
// blocked for ever in the file system, in the display or by a signal, and nothing in its own
// process can be relied on then. So a small process beside it holds the same open device and drops
// both lines when the station gives no sign of life, when it is asked to end and does not, or when
// it is gone. It keys nothing: raising the lines again is the station's part.
#pragma once

#include <memory>
#include <sys/types.h>

#include "base/time.h"
#include "platform/linux/descriptor.h"

namespace ostrel {

/// Drops both keying lines of the open `device`, whatever comes of it. Safe in a signal handler.
void DropLines(int device) noexcept;

struct GuardBoard;  // what the two processes share

class KeyingGuard {
 public:
  /// Starts the guard over the open `device`; it watches when this returns. `stop` is readable from
  /// the moment the program is asked to end; -1 when nothing tells. Throws Failure when the system
  /// has no process to give.
  KeyingGuard(int device, int stop);
  /// Ends the guard. The lines stay as they are.
  ~KeyingGuard();
  KeyingGuard(const KeyingGuard&) = delete;
  KeyingGuard& operator=(const KeyingGuard&) = delete;

  /// A sign of life, worth `patience`. Makes no system call. The guard looks ten times a second;
  /// once the program is asked to end, half a second is all it waits.
  void Beat(milliseconds patience);
  /// True once after the guard has dropped the lines. Makes no system call.
  bool TakeDropped();
  /// False when the guard has ended, or was stopped.
  bool IsWatching();

 private:
  struct Unmap {
    void operator()(GuardBoard* board) const;
  };

  std::unique_ptr<GuardBoard, Unmap> board_;
  Descriptor lifeline_;  // its other end is the guard's; it closes however the station ends
  pid_t process_ = -1;
};

}  // namespace ostrel
