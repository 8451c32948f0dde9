#include "feed/placing.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/names.h"
#include "base/reporting.h"
#include "platform/linux/file_io.h"
#include "platform/linux/free_name.h"
#include "platform/linux/system_error.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = ".feed-", kSuffix = ".part";

bool IsHiddenName(std::string_view name) {
  return name.starts_with(kPrefix) && name.ends_with(kSuffix);
}

/// Calls `take` with each entry of the folder, as far as it can be read.
template <typename Take>
void ForEachEntry(const std::string& folder, Take&& take) {
  std::error_code error;
  fs::directory_iterator at(folder, error);
  for (; !error && at != fs::directory_iterator(); at.increment(error)) take(*at);
}

bool IsThere(const std::string& folder) {
  struct stat status;
  return stat(folder.c_str(), &status) == 0;
}

bool IsGone(const std::string& path) {
  struct stat status;
  return lstat(path.c_str(), &status) != 0 && errno == ENOENT;
}

}  // namespace

HiddenFile::HiddenFile(const std::string& folder, const std::string& name)
    : placement_{.hidden = {}, .path = JoinPath(folder, name)} {
  static std::atomic<unsigned> count = 0;
  do {  // an ended program of the same number may have left the name
    placement_.hidden =
        JoinPath(folder, fmt::format("{}{}-{}{}", kPrefix, getpid(), ++count, kSuffix));
    file_ =
        Descriptor(open(placement_.hidden.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  } while (!file_ && errno == EEXIST);
  if (!file_) ThrowFileFailure(errno, folder);  // the hidden name says nothing to anybody
}

HiddenFile::~HiddenFile() {
  if (!isReleased_) unlink(placement_.hidden.c_str());
}

void HiddenFile::Write(std::string_view bytes) {
  const int error = WriteFully(file_.Get(), bytes);
  if (error != 0) ThrowFileFailure(error, std::string(FolderOf(placement_.path)));
}

void HiddenFile::Flush() {
  if (fdatasync(file_.Get()) != 0) ThrowFileFailure(errno, std::string(FolderOf(placement_.path)));
}

std::unique_ptr<HiddenFile> WriteHidden(const std::string& folder, const std::string& name,
                                        std::string_view content) {
  auto file = std::make_unique<HiddenFile>(folder, name);
  file->Write(content);
  file->Flush();
  return file;
}

std::string Place(const Placement& placement) {
  const std::string folder(FolderOf(placement.path));
  auto path = placement.path;
  const int error = RenameToFree(placement.hidden, path);
  if (error == ENOENT && IsThere(folder) && IsGone(placement.hidden)) return {};
  if (error != 0) ThrowFileFailure(error, placement.path);
  TryStep([&] { FlushFolder(folder); });  // it is in its place all the same
  return path;
}

void RemoveLeftovers(const std::string& folder, const std::vector<Placement>& kept) {
  ForEachEntry(folder, [&](const fs::directory_entry& entry) {
    const auto path = JoinPath(folder, entry.path().filename().string());
    const bool isKept = std::any_of(
        kept.begin(), kept.end(), [&](const auto& placement) { return placement.hidden == path; });
    if (IsHiddenName(FileNameOf(path)) && !isKept) unlink(path.c_str());
  });
}

std::string ReadOpened(int descriptor, const std::string& path) {
  struct stat status;
  if (fstat(descriptor, &status) != 0) ThrowFileFailure(errno, path);
  std::string content(static_cast<std::size_t>(status.st_size), '\0');
  const auto size = ReadFully(descriptor, 0, content);
  if (size < 0) ThrowFileFailure(static_cast<int>(-size), path);
  content.resize(static_cast<std::size_t>(size));
  return content;
}

std::string ReadWhole(const std::string& path) {
  const auto file = OpenToRead(path, Links::kRefused);
  if (!file) ThrowFileFailure(errno, path);
  return ReadOpened(file.Get(), path);
}

std::size_t KeepNewest(const std::string& folder, std::size_t most, std::uintmax_t bytes) {
  struct Kept {
    fs::file_time_type time;
    fs::path path;
    std::uintmax_t size;
  };
  std::vector<Kept> files;
  std::uintmax_t sum = 0;
  ForEachEntry(folder, [&](const fs::directory_entry& entry) {
    if (IsHiddenName(entry.path().filename().string())) return;
    std::error_code error;
    Kept file{entry.last_write_time(error), entry.path(), 0};
    if (!error) file.size = entry.file_size(error);
    if (error) return;
    sum += file.size;
    files.push_back(std::move(file));
  });
  std::sort(files.begin(), files.end(),
            [](const Kept& one, const Kept& other) { return one.time < other.time; });
  std::size_t gone = 0, left = files.size();
  for (const auto& file : files) {
    if (left <= most && sum <= bytes) break;
    std::error_code error;
    if (!fs::remove(file.path, error)) continue;
    ++gone, --left;
    sum -= file.size;
  }
  return gone;
}

void MakeFolders(const std::string& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) ThrowFileFailure(error.value(), folder);
}

}  // namespace ostrel
