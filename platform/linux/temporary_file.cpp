#include "platform/linux/temporary_file.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "base/names.h"
#include "platform/linux/file_io.h"
#include "platform/linux/overwriting.h"

namespace ostrel {
namespace {

constexpr std::string_view kPrefix = ".ostrel-";
constexpr std::string_view kSuffix = ".part";

}  // namespace

bool IsTemporaryName(std::string_view name) {
  return name.starts_with(kPrefix) && name.ends_with(kSuffix);
}

std::string TemporaryPath(const std::string& folder) {
  static std::atomic<unsigned> counter{0};
  return JoinPath(folder, fmt::format("{}{}-{}{}", kPrefix, getpid(), ++counter, kSuffix));
}

TemporaryFile::TemporaryFile(const std::string& folder) {
  do {  // a crashed process of the same number may have left the name
    path_ = TemporaryPath(folder);
    file_ = Descriptor(open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  } while (!file_ && errno == EEXIST);
  if (!file_) error_ = errno;
  // Tells RemoveAbandoned that someone is at work; where it cannot be had, nothing is lost by it.
  if (file_) flock(file_.Get(), LOCK_EX | LOCK_NB);
}

TemporaryFile::~TemporaryFile() {
  if (file_) unlink(path_.c_str());
}

int TemporaryFile::Write(std::string_view bytes) {
  return WriteFully(file_.Get(), bytes);
}

int TemporaryFile::SetMode(unsigned mode) {
  return fchmod(file_.Get(), mode) == 0 ? 0 : errno;
}

int TemporaryFile::FlushContent() {
  return fdatasync(file_.Get()) == 0 ? 0 : errno;
}

int TemporaryFile::Commit(const std::string& path, UtcTime time, Flush flush) {
  const int error = flush == Flush::kFirst ? FlushContent() : 0;
  if (error != 0) return error;
  const timespec stamp = ToTimespec(time);
  const timespec stamps[] = {stamp, stamp};
  if (futimens(file_.Get(), stamps) != 0) return errno;
  if (rename(path_.c_str(), path.c_str()) != 0) return errno == EPERM ? CommitInPlace(path) : errno;
  file_.Reset();
  return 0;
}

int TemporaryFile::CommitInPlace(const std::string& path) {
  const auto whole = WholePath(path);
  if (rename(path_.c_str(), whole.c_str()) == 0) path_ = whole;
  const Descriptor folder(open(std::string(FolderOf(path)).c_str(), O_RDONLY | O_CLOEXEC));
  if (folder) fsync(folder.Get());
  return Overwrite(file_.Get(), path);
}

void RemoveAbandoned(const std::string& path) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (file && flock(file.Get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return;
  unlink(path.c_str());
}

}  // namespace ostrel
