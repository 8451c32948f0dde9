#include "platform/linux/free_name.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>

#include "base/names.h"
#include "platform/linux/file_io.h"

namespace ostrel {

/// Some network file systems cannot refuse to replace: there it is looked at before.
int RenameWithoutReplacing(const std::string& from, const std::string& to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return errno;
  struct stat status;
  if (lstat(to.c_str(), &status) == 0) return EEXIST;
  if (errno != ENOENT) return errno;
  return rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

int RenameToFree(const std::string& from, std::string& path) {
  const auto folder = FolderToCreateIn(path);
  int error = 0;
  FirstFreeName(std::string(FileNameOf(path)), [&](const auto& name) {
    path = JoinPath(folder, name);
    error = RenameWithoutReplacing(from, path);
    return error == EEXIST;
  });
  return error;
}

}  // namespace ostrel
