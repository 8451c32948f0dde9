#include "platform/linux/held_alone.h"

#include <cerrno>
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "platform/linux/file_io.h"

namespace ostrel {
namespace {

// Who opens the file while the lease is held has it broken by a signal. The usual one would end the
// program; this one does nothing unless asked for.
constexpr int kLeaseSignal = SIGURG;

// A writer that opens and closes the file for each piece holds nothing in between.
constexpr seconds kQuietTime{2};

bool LooksQuiet(int descriptor, UtcTime now) {
  if (flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return false;
  flock(descriptor, LOCK_UN);
  struct stat status;
  if (fstat(descriptor, &status) != 0) return false;
  return std::chrono::abs(now - WriteTimeOf(status)) >= kQuietTime;
}

}  // namespace

bool IsHeldAlone(int descriptor, UtcTime now) {
  fcntl(descriptor, F_SETSIG, kLeaseSignal);
  if (fcntl(descriptor, F_SETLEASE, F_WRLCK) == 0) {
    fcntl(descriptor, F_SETLEASE, F_UNLCK);
    return true;
  }
  return errno != EAGAIN && LooksQuiet(descriptor, now);
}

}  // namespace ostrel
