#include "platform/linux/folder_reader.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <dirent.h>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>

#include "platform/linux/descriptor.h"

namespace ostrel {
namespace {

// Room for one name of 255 bytes at least.
constexpr std::size_t kFewBytes = 512;
constexpr std::size_t kManyBytes = 32 * 1024;

bool IsDots(std::string_view name) {
  return name == "." || name == "..";
}

}  // namespace

int ReadFolder(const std::string& path, Portion portion,
               const std::function<Reading(const FolderEntry&)>& visit) {
  const Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder) return errno;
  alignas(dirent64) std::array<char, kManyBytes> buffer;
  std::size_t size = portion == Portion::kFewEntries ? kFewBytes : kManyBytes;
  for (;;) {
    const ssize_t count = getdents64(folder.Get(), buffer.data(), size);
    if (count == 0) return 0;
    if (count < 0) return errno == ENOENT ? 0 : errno;  // removed while being read: it is empty
    for (ssize_t at = 0; at < count;) {
      const auto* entry = reinterpret_cast<const dirent64*>(buffer.data() + at);
      at += entry->d_reclen;
      if (IsDots(entry->d_name)) continue;
      if (visit({folder.Get(), entry->d_name, entry->d_type}) == Reading::kEnough) return 0;
    }
    size = buffer.size();  // the few were not those that were looked for
  }
}

bool IsRegularFile(const FolderEntry& entry) {
  if (entry.type != DT_UNKNOWN) return entry.type == DT_REG;
  struct stat status;
  return fstatat(entry.folder, entry.name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISREG(status.st_mode);
}

}  // namespace ostrel
