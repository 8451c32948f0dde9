#include "platform/linux/file_io.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

#include "base/names.h"
#include "platform/linux/system_error.h"

namespace ostrel {

// In a folder with the sticky bit that a group may write to, the system refuses to open with
// O_CREAT what another account has made there, even where its permissions would allow it.
int OpenOrMake(const char* path, int flags, unsigned mode) {
  flags |= O_NOFOLLOW | O_CLOEXEC;
  for (;;) {
    const int present = open(path, flags);
    if (present >= 0 || errno != ENOENT) return present;
    const int made = open(path, flags | O_CREAT | O_EXCL, mode);
    if (made >= 0 || errno != EEXIST) return made;
  }
}

Descriptor OpenToRead(const std::string& path, Links links) {
  // To open a device may be to do something: to raise the lines of a transmitter's port, say.
  struct stat status;
  if (links == Links::kFollowed && stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
    errno = EISDIR;
    return Descriptor();
  }
  const int noFollow = links == Links::kRefused ? O_NOFOLLOW : 0;
  return Descriptor(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | noFollow));
}

std::string FolderToCreateIn(const std::string& path) {
  const auto folder = FolderOf(path);
  if (!folder.empty()) return std::string(folder);
  return path.starts_with('/') ? "/" : ".";
}

void FlushFolder(const std::string& folder) {
  const Descriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!opened) ThrowFileFailure(errno, folder);
  const bool isFlushed = fsync(opened.Get()) == 0 || errno == EINVAL;  // some cannot be asked
  if (!isFlushed) ThrowFileFailure(errno, folder);
}

int WriteFully(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(descriptor, bytes.data(), bytes.size());
    if (count >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

std::int64_t ReadFully(int descriptor, std::int64_t offset, std::span<char> buffer) {
  std::size_t have = 0;
  while (have < buffer.size()) {
    const auto rest = buffer.subspan(have);
    const ssize_t count =
        pread(descriptor, rest.data(), rest.size(), offset + static_cast<std::int64_t>(have));
    if (count == 0) break;
    if (count > 0) {
      have += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      return -errno;
    }
  }
  return static_cast<std::int64_t>(have);
}

timespec ToTimespec(UtcTime time) {
  const auto whole = std::chrono::floor<seconds>(time);
  const auto part = std::chrono::nanoseconds(time - whole);
  return {whole.time_since_epoch().count(), part.count()};
}

UtcTime WriteTimeOf(const struct stat& status) {
  const auto whole = seconds(status.st_mtim.tv_sec);
  const auto part = std::chrono::nanoseconds(status.st_mtim.tv_nsec);
  return UtcTime(std::chrono::floor<milliseconds>(whole + part));
}

bool IsSameContent(const struct stat& one, const struct stat& other) {
  return one.st_size == other.st_size && one.st_mtim.tv_sec == other.st_mtim.tv_sec &&
         one.st_mtim.tv_nsec == other.st_mtim.tv_nsec;
}

bool IsUnchanged(int descriptor, const struct stat& status) {
  struct stat present;
  return fstat(descriptor, &present) == 0 && IsSameContent(present, status);
}

}  // namespace ostrel
