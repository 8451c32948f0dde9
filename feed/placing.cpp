#include "feed/placing.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/names.h"
#include "base/reporting.h"
#include "platform/linux/file_io.h"
#include "platform/linux/system_error.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = ".feed-", kSuffix = ".part";

bool IsHiddenName(std::string_view name) {
  return name.starts_with(kPrefix) && name.ends_with(kSuffix);
}

/// Renames without replacing; 0, or the system's error. Some network file systems cannot refuse to
/// replace: there it is looked at before.
int RenameToFree(const std::string& from, const std::string& to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return errno;
  struct stat status;
  if (lstat(to.c_str(), &status) == 0) return EEXIST;
  return rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

}  // namespace

Placement WriteHidden(const std::string& folder, const std::string& name,
                      std::string_view content) {
  static unsigned count = 0;
  std::string path;
  Descriptor file;
  do {  // an ended program of the same number may have left the name
    path = JoinPath(folder, fmt::format("{}{}-{}{}", kPrefix, getpid(), ++count, kSuffix));
    file = Descriptor(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  } while (!file && errno == EEXIST);
  if (!file) ThrowFileFailure(errno, folder);  // the hidden name says nothing to anybody
  int error = WriteFully(file.Get(), content);
  if (error == 0 && fdatasync(file.Get()) != 0) error = errno;
  if (error != 0) {
    unlink(path.c_str());
    ThrowFileFailure(error, folder);
  }
  return {.hidden = path, .path = JoinPath(folder, name)};
}

std::string Place(const Placement& placement) {
  const std::string folder(FolderOf(placement.path));
  int error = 0;
  const auto free = FirstFreeName(std::string(FileNameOf(placement.path)), [&](const auto& name) {
    error = RenameToFree(placement.hidden, JoinPath(folder, name));
    return error == EEXIST;
  });
  if (error == ENOENT && fs::exists(folder) && !fs::exists(fs::symlink_status(placement.hidden)))
    return {};
  if (error != 0) ThrowFileFailure(error, placement.path);
  TryStep([&] { FlushFolder(folder); });  // it is in its place all the same
  return JoinPath(folder, free);
}

void RemoveLeftovers(const std::string& folder, const std::vector<Placement>& kept) {
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    const auto path = JoinPath(folder, entry.path().filename().string());
    const bool isKept = std::any_of(
        kept.begin(), kept.end(), [&](const auto& placement) { return placement.hidden == path; });
    if (IsHiddenName(FileNameOf(path)) && !isKept) unlink(path.c_str());
  }
}

std::string ReadWhole(const std::string& path) {
  const auto file = OpenToRead(path, Links::kRefused);
  struct stat status;
  if (!file || fstat(file.Get(), &status) != 0) ThrowFileFailure(errno, path);
  std::string content(std::min(static_cast<std::size_t>(status.st_size), kLargestContent), '\0');
  const auto size = ReadFully(file.Get(), 0, content);
  if (size < 0) ThrowFileFailure(static_cast<int>(-size), path);
  content.resize(static_cast<std::size_t>(size));
  return content;
}

std::size_t KeepNewest(const std::string& folder, std::size_t most, std::uintmax_t bytes) {
  std::vector<std::pair<fs::file_time_type, fs::path>> files;
  std::error_code error;
  std::uintmax_t sum = 0;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    files.emplace_back(entry.last_write_time(error), entry.path());
    sum += entry.is_regular_file(error) ? entry.file_size(error) : 0;
  }
  if (files.size() <= most && sum <= bytes) return 0;
  std::sort(files.begin(), files.end());
  std::size_t gone = 0;
  for (; gone < files.size() && (files.size() - gone > most || sum > bytes); ++gone) {
    const auto& path = files[gone].second;
    const auto size = fs::file_size(path, error);
    if (fs::remove(path, error)) sum -= std::min(sum, size);
  }
  return gone;
}

void MakeFolders(const std::string& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) ThrowFileFailure(error.value(), folder);
}

}  // namespace ostrel
