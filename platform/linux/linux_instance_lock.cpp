#include "platform/linux/linux_instance_lock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>

#include "base/names.h"
#include "platform/linux/file_io.h"
#include "platform/linux/system_error.h"

namespace ostrel {

bool LinuxInstanceLock::TryLock() {
  if (lock_) return true;
  const std::string path = JoinPath(programFolder_, ".ostrel.lock");
  // Close-on-exec: a program started from here must not keep the lock.
  Descriptor file(OpenOrMake(path.c_str(), O_RDWR));
  if (!file) ThrowFileFailure(errno, path);
  if (flock(file.Get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno == EWOULDBLOCK) return false;
    ThrowFileFailure(errno, path);
  }
  lock_ = std::move(file);
  return true;
}

}  // namespace ostrel
