#include "platform/linux/quiet_files.h"

#include <fcntl.h>

#include "base/names.h"
#include "platform/linux/file_io.h"
#include "platform/linux/folder_reader.h"

namespace ostrel {
namespace {

constexpr std::size_t kMostLooks = 100;

}  // namespace

bool QuietFiles::IsQuiet(const std::string& path, const struct stat& status, milliseconds now) {
  const auto known = looks_.find(path);
  if (known != looks_.end() && IsSameContent(known->second.status, status))
    return now - known->second.since >= kQuietTime;
  LookAround(std::string(FolderOf(path)), now);
  looks_.insert_or_assign(path, Look{status, now});
  return false;
}

void QuietFiles::NoteOwn(const std::string& path, milliseconds now) {
  struct stat status;
  if (looks_.size() < kMostLooks && lstat(path.c_str(), &status) == 0)
    looks_.insert_or_assign(path, Look{status, now - kQuietTime});
}

/// Forgets what is no longer there.
void QuietFiles::LookAround(const std::string& folder, milliseconds now) {
  std::map<std::string, Look> looks;
  ReadFolder(folder, Portion::kManyEntries, [&](const FolderEntry& entry) {
    struct stat status;
    if (fstatat(entry.folder, entry.name, &status, AT_SYMLINK_NOFOLLOW) != 0)
      return Reading::kContinue;
    const auto path = folder + "/" + entry.name;
    const auto known = looks_.find(path);
    const bool isSame = known != looks_.end() && IsSameContent(known->second.status, status);
    looks.emplace(path, isSame ? known->second : Look{status, now});
    return looks.size() < kMostLooks ? Reading::kContinue : Reading::kEnough;
  });
  looks_ = std::move(looks);
}

}  // namespace ostrel
