#include "platform/linux/held_alone.h"

#include <cerrno>
#include <fcntl.h>
#include <signal.h>

#include "platform/linux/file_io.h"
#include "platform/linux/free_name.h"
#include "platform/linux/local_file_system.h"
#include "platform/linux/system_error.h"
#include "platform/linux/temporary_file.h"

namespace ostrel {
namespace {

// Who opens the file to write while the lease is held has it broken by a signal. The usual one
// would end the program; this one does nothing unless asked for.
constexpr int kLeaseSignal = SIGURG;

}  // namespace

/// On a share, or behind a file system in user space, neither a lease nor its refusal says
/// anything: the writer may be on another computer.
LeaseAnswer TakeLease(int descriptor, Others others) {
  if (!LiesOnLocalFileSystem(descriptor)) return LeaseAnswer::kNone;
  fcntl(descriptor, F_SETSIG, kLeaseSignal);
  const int first = others == Others::kAny ? F_WRLCK : F_RDLCK;
  if (fcntl(descriptor, F_SETLEASE, first) != 0)
    return errno == EAGAIN ? LeaseAnswer::kOpenElsewhere : LeaseAnswer::kNone;
  if (fcntl(descriptor, F_SETLEASE, F_RDLCK) == 0) return LeaseAnswer::kGiven;
  fcntl(descriptor, F_SETLEASE, F_UNLCK);  // somebody came in between
  return LeaseAnswer::kOpenElsewhere;
}

bool LinuxFileHold::Delete() {
  if (HasMoved()) return IsUnwritten();
  const auto aside = TemporaryPath(FolderToCreateIn(path_));
  if (!MoveAside(aside)) return false;
  if (unlink(aside.c_str()) == 0) return true;
  const int error = errno;
  PutBack(aside);
  ThrowFileFailure(error, path_);
}

/// A program may find the file right before it goes, and would write into nothing. So it gets a
/// name first that nobody looks for: who found it before that is waiting for the lease by then.
bool LinuxFileHold::MoveAside(const std::string& aside) {
  if (!IsAlone(path_)) return false;
  if (const int error = RenameWithoutReplacing(path_, aside); error != 0)
    ThrowFileFailure(error, path_);
  if (IsAlone(aside)) return true;
  PutBack(aside);
  return false;
}

bool LinuxFileHold::IsAlone(const std::string& path) const {
  return IsUnwritten() && IsHere(path);
}

/// A lease says more than the times do, and lasts over a stamp of the station's own.
bool LinuxFileHold::IsUnwritten() const {
  if (lease_ == LeaseAnswer::kGiven) return fcntl(file_.Get(), F_GETLEASE) == F_RDLCK;
  return IsUnchanged(file_.Get(), status_);
}

/// The station itself moved it on, on a disk without room for a second name.
bool LinuxFileHold::HasMoved() const {
  struct stat present;
  return lstat(path_.c_str(), &present) != 0 && errno == ENOENT;
}

bool LinuxFileHold::IsHere(const std::string& path) const {
  struct stat present;
  return lstat(path.c_str(), &present) == 0 && present.st_dev == status_.st_dev &&
         present.st_ino == status_.st_ino;
}

void LinuxFileHold::PutBack(const std::string& aside) const {
  auto path = path_;
  if (const int error = RenameToFree(aside, path); error != 0) ThrowFileFailure(error, path_);
}

}  // namespace ostrel
