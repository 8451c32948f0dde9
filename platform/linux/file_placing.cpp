#include "platform/linux/file_placing.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

#include "platform/linux/file_io.h"
#include "platform/linux/local_file_system.h"
#include "platform/linux/system_error.h"

namespace ostrel {
namespace {

constexpr std::int64_t kPiece = 1024 * 1024;

int ErrorOf(int result) {
  return result == 0 ? 0 : errno;
}

bool IsSameFile(const struct stat& one, const struct stat& other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

int LinkTo(const PlacedSource& source, const std::string& name) {
  if (link(source.path.c_str(), name.c_str()) != 0) return errno;
  struct stat linked;
  if (lstat(name.c_str(), &linked) == 0 && IsSameFile(linked, source.status)) return 0;
  unlink(name.c_str());
  return EBUSY;
}

int Stamp(const std::string& path, UtcTime time) {
  const timespec stamp = ToTimespec(time);
  const timespec stamps[] = {stamp, stamp};
  return ErrorOf(utimensat(AT_FDCWD, path.c_str(), stamps, AT_SYMLINK_NOFOLLOW));
}

/// Reads and writes what the system's own copy leaves, from `offset` on. Returns a copy code.
int CopyBytes(const PlacedSource& source, std::int64_t offset, TemporaryFile& copy,
              const std::function<void()>& goOn) {
  std::array<char, 64 * 1024> buffer;
  for (;;) {
    goOn();
    const std::int64_t count = ReadFully(source.file.Get(), offset, buffer);
    if (count < 0) return SourceCopyCode(static_cast<int>(-count));
    if (count == 0) return copy_code::kDone;
    if (offset >= source.status.st_size) return copy_code::kInUse;  // somebody adds to it
    const int error = copy.Write({buffer.data(), static_cast<std::size_t>(count)});
    if (error != 0) return DestinationCopyCode(error);
    offset += count;
  }
}

/// As much as the system's own copy does. Returns how many bytes, or a negative system error that
/// reading and writing would meet as well.
std::int64_t CopyBySystem(const PlacedSource& source, TemporaryFile& copy,
                          const std::function<void()>& goOn) {
  const std::int64_t size = source.status.st_size;
  std::int64_t done = 0;
  while (done < size) {
    goOn();
    const auto piece = static_cast<std::size_t>(std::min(size - done, kPiece));
    loff_t at = done;
    const ssize_t count = copy_file_range(source.file.Get(), &at, copy.Get(), nullptr, piece, 0);
    if (count <= 0) break;  // two file systems that cannot, or a fault that reading meets too
    done += count;
  }
  return done;
}

}  // namespace

bool MayHaveSecondName(const PlacedSource& source, const std::string& folder) {
  struct stat there;
  if (stat(folder.c_str(), &there) != 0 || there.st_dev != source.status.st_dev) return false;
  const bool isOwn = source.status.st_uid == geteuid();
  return isOwn && LiesOnLocalFileSystem(source.file.Get()) && KnowsSecondNames(source.file.Get());
}

int GiveSecondName(const PlacedSource& source, const std::string& destination, UtcTime time) {
  const auto name = TemporaryPath(FolderToCreateIn(destination));
  int error = LinkTo(source, name);
  if (error != 0) return error;
  error = Stamp(name, time);
  if (error == 0) error = ErrorOf(rename(name.c_str(), destination.c_str()));
  unlink(name.c_str());  // a rename onto the same file leaves both names
  return error;
}

int MoveFileItself(const PlacedSource& source, const std::string& destination, UtcTime time) {
  if (rename(source.path.c_str(), destination.c_str()) != 0) return errno;
  Stamp(destination, time);
  return 0;
}

int CopyContent(const PlacedSource& source, TemporaryFile& copy,
                const std::function<void()>& goOn) {
  const auto done = CopyBySystem(source, copy, goOn);
  const int code = CopyBytes(source, done, copy, goOn);
  if (code != copy_code::kDone) return code;
  const bool isSame = IsUnchanged(source.file.Get(), source.status);
  return isSame ? copy_code::kDone : copy_code::kInUse;  // half old, half new, it may be
}

}  // namespace ostrel
