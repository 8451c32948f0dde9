#include "platform/linux/overwriting.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "base/names.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/file_io.h"

namespace ostrel {
namespace {

constexpr std::string_view kPrefix = ".ostrel-whole-";
constexpr int kAsItIs = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;

int TakeRoom(int file, off_t size) {
  if (size == 0 || fallocate(file, FALLOC_FL_KEEP_SIZE, 0, size) == 0) return 0;
  return errno == EOPNOTSUPP ? 0 : errno;
}

int CopyBytes(int source, int target) {
  std::array<char, 64 * 1024> buffer;
  for (std::int64_t offset = 0;;) {
    const std::int64_t count = ReadFully(source, offset, buffer);
    if (count < 0) return static_cast<int>(-count);
    if (count == 0) return ftruncate(target, offset) == 0 ? 0 : errno;
    const int error = WriteFully(target, {buffer.data(), static_cast<std::size_t>(count)});
    if (error != 0) return error;
    offset += count;
  }
}

/// Somebody may have laid it there to have our account write where his own cannot.
bool IsMadeByAWriter(int whole, const std::string& path) {
  struct stat content, file;
  if (fstat(whole, &content) != 0 || lstat(path.c_str(), &file) != 0) return false;
  if (!S_ISREG(content.st_mode) || content.st_nlink != 1 || content.st_size == 0) return false;
  const bool groupWrites = (file.st_mode & S_IWGRP) != 0 && file.st_gid == content.st_gid;
  return content.st_uid == geteuid() || groupWrites;
}

}  // namespace

std::string WholePath(const std::string& path) {
  return JoinPath(FolderOf(path), std::string(kPrefix).append(FileNameOf(path)));
}

bool IsWholeName(std::string_view name) {
  return name.starts_with(kPrefix);
}

int Overwrite(int source, const std::string& path) {
  const Descriptor target(open(path.c_str(), O_WRONLY | kAsItIs));
  if (!target) return errno;
  struct stat from, to;
  if (fstat(source, &from) != 0 || fstat(target.Get(), &to) != 0) return errno;
  if (!S_ISREG(to.st_mode)) return EPERM;
  int error = TakeRoom(target.Get(), from.st_size);
  if (error == 0) error = CopyBytes(source, target.Get());
  if (error == 0 && fdatasync(target.Get()) != 0) error = errno;
  return error;
}

void FinishOverwriting(const std::string& whole) {
  const Descriptor content(open(whole.c_str(), O_RDWR | kAsItIs));
  if (!content) return;
  if (flock(content.Get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return;
  const std::string name(FileNameOf(whole).substr(kPrefix.size()));
  const auto path = JoinPath(FolderOf(whole), name);
  if (IsMadeByAWriter(content.Get(), path) && Overwrite(content.Get(), path) != 0) return;
  // Another account's can only be emptied, and counts for nothing then.
  if (unlink(whole.c_str()) != 0 && ftruncate(content.Get(), 0) != 0) return;
}

}  // namespace ostrel
