#include "platform/linux/held_alone.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <linux/magic.h>
#include <signal.h>
#include <sys/vfs.h>

#include "base/names.h"
#include "platform/linux/file_io.h"
#include "platform/linux/system_error.h"
#include "platform/linux/temporary_file.h"

namespace ostrel {
namespace {

// Who opens the file to write while the lease is held has it broken by a signal. The usual one
// would end the program; this one does nothing unless asked for.
constexpr int kLeaseSignal = SIGURG;

#ifndef CIFS_SUPER_MAGIC
#define CIFS_SUPER_MAGIC 0xFF534D42
#endif
#ifndef SMB2_SUPER_MAGIC
#define SMB2_SUPER_MAGIC 0xFE534D42
#endif

/// A network share refuses a lease as if the file were open elsewhere, whenever its server has
/// granted none to this computer: the refusal says nothing there.
bool LiesOnAShare(int descriptor) {
  struct statfs system;
  if (fstatfs(descriptor, &system) != 0) return false;
  const auto magic = static_cast<std::uint32_t>(system.f_type);
  const std::uint32_t shares[] = {NFS_SUPER_MAGIC, SMB_SUPER_MAGIC, CIFS_SUPER_MAGIC,
                                  SMB2_SUPER_MAGIC};
  return std::ranges::find(shares, magic) != std::end(shares);
}

}  // namespace

LeaseAnswer TakeLease(int descriptor) {
  fcntl(descriptor, F_SETSIG, kLeaseSignal);
  if (fcntl(descriptor, F_SETLEASE, F_WRLCK) != 0) {
    const bool isOpenElsewhere = errno == EAGAIN && !LiesOnAShare(descriptor);
    return isOpenElsewhere ? LeaseAnswer::kOpenElsewhere : LeaseAnswer::kNone;
  }
  if (fcntl(descriptor, F_SETLEASE, F_RDLCK) == 0) return LeaseAnswer::kGiven;
  fcntl(descriptor, F_SETLEASE, F_UNLCK);  // somebody came in between
  return LeaseAnswer::kOpenElsewhere;
}

/// A program may find the file right before it is deleted, and would write into nothing. So it goes
/// to a name first that nobody looks for: who found it before that is waiting for the lease by
/// then.
bool LinuxFileHold::Delete() {
  if (!IsAlone(path_)) return false;
  const auto aside = TemporaryPath(FolderToCreateIn(path_));
  if (rename(path_.c_str(), aside.c_str()) != 0) ThrowFileFailure(errno, path_);
  if (IsAlone(aside)) {
    if (unlink(aside.c_str()) == 0) return true;
    const int error = errno;
    PutBack(aside);
    ThrowFileFailure(error, path_);
  }
  PutBack(aside);
  return false;
}

bool LinuxFileHold::IsAlone(const std::string& path) const {
  if (!IsUnchanged(file_.Get(), status_) || !IsHere(path)) return false;
  return lease_ != LeaseAnswer::kGiven || fcntl(file_.Get(), F_GETLEASE) == F_RDLCK;
}

bool LinuxFileHold::IsHere(const std::string& path) const {
  struct stat present;
  return lstat(path.c_str(), &present) == 0 && present.st_dev == status_.st_dev &&
         present.st_ino == status_.st_ino;
}

/// Beside a file that has come under its name meanwhile.
void LinuxFileHold::PutBack(const std::string& aside) const {
  const auto folder = FolderToCreateIn(path_);
  const auto name =
      FirstFreeName(std::string(FileNameOf(path_)), [&](const std::string& candidate) {
        struct stat present;
        return lstat(JoinPath(folder, candidate).c_str(), &present) == 0;
      });
  if (rename(aside.c_str(), JoinPath(folder, name).c_str()) != 0) ThrowFileFailure(errno, path_);
}

}  // namespace ostrel
