#include "platform/linux/trusted_program.h"

#include <cerrno>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/failure.h"
#include "platform/linux/system_error.h"

namespace ostrel {
namespace {

bool IsOurs(const struct stat& status) {
  return status.st_uid == 0 || status.st_uid == geteuid();
}

bool OthersMayWrite(const struct stat& status) {
  if ((status.st_mode & S_IWOTH) != 0) return true;
  if ((status.st_mode & S_IWGRP) == 0) return false;
  const auto* const account = getpwuid(geteuid());
  const gid_t own = account == nullptr ? getegid() : account->pw_gid;
  return status.st_gid != 0 && status.st_gid != own;
}

}  // namespace

void CheckTrusted(const std::string& path) {
  struct stat entry, program;
  if (lstat(path.c_str(), &entry) != 0 || stat(path.c_str(), &program) != 0)
    ThrowFileFailure(errno, path);
  if (IsOurs(entry) && IsOurs(program) && !OthersMayWrite(program)) return;
  throw Failure(failure_number::kPermissionDenied,
                "Others than root and this account can write the program: " + path);
}

}  // namespace ostrel
