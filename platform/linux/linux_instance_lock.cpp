#include "platform/linux/linux_instance_lock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>

#include "base/names.h"
#include "platform/linux/file_io.h"
#include "platform/linux/system_error.h"

namespace ostrel {

namespace {

/// Zero, or why it is not ours.
int Lock(const Descriptor& file) {
  return flock(file.Get(), LOCK_EX | LOCK_NB) == 0 ? 0 : errno;
}

}  // namespace

// Close-on-exec: a program started from here must not keep the locks.
bool LinuxInstanceLock::TryLock() {
  if (lock_) return true;
  const std::string path = JoinPath(programFolder_, ".ostrel.lock");
  Descriptor file(OpenOrMake(path.c_str(), O_RDWR));
  if (!file) ThrowFileFailure(errno, path);
  Descriptor folder(open(programFolder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const int error = Lock(file);
  if (error == EWOULDBLOCK || Lock(folder) == EWOULDBLOCK) return false;
  if (error != 0) ThrowFileFailure(error, path);
  lock_ = std::move(file);
  folderLock_ = std::move(folder);
  return true;
}

}  // namespace ostrel
