#include "platform/linux/linux_files.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include "base/failure.h"
#include "base/names.h"
#include "base/text.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/file_io.h"
#include "platform/linux/folder_reader.h"
#include "platform/linux/held_alone.h"
#include "platform/linux/local_file_system.h"
#include "platform/linux/overwriting.h"
#include "platform/linux/system_error.h"
#include "platform/linux/temporary_file.h"

namespace ostrel {
namespace {

/// What is smaller takes no time worth mentioning, on a memory card either. Bytes.
constexpr std::int64_t kLargeFile = 1024 * 1024;

/// Throws for a call that failed on `path`.
void Check(int result, const std::string& path) {
  if (result != 0) ThrowFileFailure(errno, path);
}

struct stat StatusOf(const std::string& path) {
  struct stat status;
  Check(stat(path.c_str(), &status), path);
  return status;
}

/// For a call on two paths: the missing one is the source, or else the destination's folder.
void CheckBoth(int result, const std::string& source, const std::string& destination) {
  if (result == 0) return;
  const int error = errno;
  struct stat status;
  const bool sourceMissing = lstat(source.c_str(), &status) != 0;
  ThrowFileFailure(error, sourceMissing ? source : destination);
}

/// A link in the place of the file gives way to a file of its own.
Descriptor OpenToAppend(const std::string& path) {
  constexpr int kFlags = O_WRONLY | O_APPEND | O_NONBLOCK;
  const int present = OpenOrMake(path.c_str(), kFlags);
  if (present >= 0 || errno != ELOOP) return Descriptor(present);
  if (unlink(path.c_str()) == 0) return Descriptor(OpenOrMake(path.c_str(), kFlags));
  errno = ELOOP;  // not permitted, which would pass for a file in use
  return Descriptor();
}

dev_t FileSystemOf(const std::string& folder) {
  return StatusOf(folder).st_dev;
}

/// `wanted` as it stands in `folder`: itself, or the first entry that differs in case alone.
std::string ActualName(const std::string& folder, const std::string& wanted) {
  const std::string upper = ToUpper(wanted);
  std::string found = wanted;
  ReadFolder(folder.empty() ? "." : folder, Portion::kManyEntries, [&](const FolderEntry& entry) {
    if (ToUpper(entry.name) != upper) return Reading::kContinue;
    found = entry.name;
    return Reading::kEnough;
  });
  return found;
}

/// A program may keep others out by a lock of its own; ours lasts until the file is closed.
bool LockIfFree(int descriptor) {
  return flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

}  // namespace

std::optional<std::string> LinuxFiles::FirstFile(const std::string& folder,
                                                 const NameTest& passedOver) {
  std::optional<std::string> first;
  const int error = ReadFolder(folder, Portion::kFewEntries, [&](const FolderEntry& entry) {
    if (entry.name[0] == '.' || !IsRegularFile(entry)) return Reading::kContinue;
    if (passedOver && passedOver(entry.name)) return Reading::kContinue;
    first = entry.name;
    return Reading::kEnough;
  });
  if (error != 0 && error != ENOENT) ThrowFileFailure(error, folder);
  return first;
}

std::vector<std::string> LinuxFiles::ListFiles(const std::string& folder) {
  std::vector<std::string> names;
  const int error = ReadFolder(folder, Portion::kManyEntries, [&](const FolderEntry& entry) {
    if (entry.name[0] != '.' && IsRegularFile(entry)) names.emplace_back(entry.name);
    return Reading::kContinue;
  });
  if (error != 0 && error != ENOENT) ThrowFileFailure(error, folder);
  return names;
}

bool LinuxFiles::Exists(const std::string& path) {
  struct stat status;
  if (lstat(path.c_str(), &status) == 0) return true;
  const bool isAbsent = errno == ENOENT || errno == ENOTDIR || errno == ENAMETOOLONG;
  if (!isAbsent) ThrowFileFailure(errno, path);
  return false;
}

std::string LinuxFiles::ActualPath(const std::string& path) {
  std::string actual;
  for (std::size_t at = 0; at < path.size();) {
    if (path[at] == '/') {
      actual += path[at++];
      continue;
    }
    const std::size_t end = std::min(path.find('/', at), path.size());
    const std::string name = path.substr(at, end - at);
    actual += Exists(actual + name) ? name : ActualName(actual, name);
    at = end;
  }
  return actual;
}

std::string LinuxFiles::RealPath(const std::string& path) {
  std::error_code error;
  const auto real = std::filesystem::weakly_canonical(std::filesystem::absolute(path), error);
  return error ? path : real.string();
}

FileStatus LinuxFiles::Status(const std::string& path) {
  const auto status = StatusOf(path);
  return {status.st_size, WriteTimeOf(status)};
}

void LinuxFiles::SetLastWriteTime(const std::string& path, UtcTime time) {
  const timespec times[] = {{0, UTIME_OMIT}, ToTimespec(time)};
  Check(utimensat(AT_FDCWD, path.c_str(), times, 0), path);
}

std::unique_ptr<FileHold> LinuxFiles::HoldAlone(const std::string& path, WhenUnknown whenUnknown) {
  Descriptor file = OpenToRead(path, Links::kRefused);
  if (!file) ThrowFileFailure(errno, path);
  const auto others = whenUnknown == WhenUnknown::kTake ? Others::kWriters : Others::kAny;
  const auto lease = TakeLease(file.Get(), others);
  struct stat status;
  Check(fstat(file.Get(), &status), path);
  if (!S_ISREG(status.st_mode)) ThrowFileFailure(EACCES, path);
  bool isAlone = lease == LeaseAnswer::kGiven;
  if (lease == LeaseAnswer::kNone)
    isAlone = whenUnknown == WhenUnknown::kTake ||
              (LockIfFree(file.Get()) && quiet_.IsQuiet(path, status, clock_.Monotonic()));
  if (!isAlone) ThrowFileFailure(EBUSY, path);
  return std::make_unique<LinuxFileHold>(std::move(file), path, status, lease);
}

int LinuxFiles::Copy(const std::string& source, const std::string& destination, Links links,
                     Flush flush) {
  const Descriptor from = OpenToRead(source, links);
  struct stat status;
  if (!from || fstat(from.Get(), &status) != 0) return SourceCopyCode(errno);
  if (!S_ISREG(status.st_mode)) return copy_code::kAccessDenied;
  const int code = CopyOpened({from, status, source}, destination, flush);
  if (code == copy_code::kDone && !LiesOnLocalFileSystem(from.Get()))
    quiet_.NoteOwn(destination, clock_.Monotonic());
  return code;
}

/// Takes the copy that was prepared, where one was.
int LinuxFiles::CopyOpened(const PlacedSource& source, const std::string& destination,
                           Flush flush) {
  const auto folder = FolderToCreateIn(destination);
  if (auto prepared = WorkerFor(source.status).Take(source, folder)) {
    if (prepared->code != copy_code::kDone) return prepared->code;
    return DestinationCopyCode(prepared->copy->Commit(destination, clock_.UtcNow(), Flush::kNever));
  }
  TemporaryFile copy(folder);
  if (copy.Error() != 0) return DestinationCopyCode(copy.Error());
  const int code = CopyContent(source, copy, [this] { clock_.CheckStop(); });
  if (code != copy_code::kDone) return code;
  return DestinationCopyCode(copy.Commit(destination, clock_.UtcNow(), flush));
}

int LinuxFiles::Place(const std::string& source, const std::string& destination) {
  const Descriptor from = OpenToRead(source, Links::kRefused);
  struct stat status;
  if (!from || fstat(from.Get(), &status) != 0) return SourceCopyCode(errno);
  if (!S_ISREG(status.st_mode)) return copy_code::kAccessDenied;
  const PlacedSource placed{from, status, source};
  const auto folder = FolderToCreateIn(destination);
  if (MayHaveSecondName(placed, folder) &&
      GiveSecondName(placed, destination, clock_.UtcNow()) == 0) {
    large_->Flush(folder);
    return copy_code::kDone;
  }
  const int code = CopyOpened(placed, destination, Flush::kFirst);
  if (code != copy_code::kDiskFull) return code;
  if (MoveFileItself(placed, destination, clock_.UtcNow()) != 0) return code;
  large_->Flush(folder);
  return copy_code::kMoved;
}

bool LinuxFiles::IsReady(const std::string& source, const std::string& folder, Means means) {
  const Descriptor from = OpenToRead(source, Links::kFollowed);
  struct stat status;
  if (!from || fstat(from.Get(), &status) != 0) return true;
  if (!S_ISREG(status.st_mode)) return true;
  const PlacedSource placed{from, status, source};
  struct stat there;
  if (stat(folder.c_str(), &there) != 0) return true;  // nothing can be prepared
  if (means == Means::kPlace && MayHaveSecondName(placed, folder)) return true;
  const auto patience = status.st_size < kLargeFile ? patience_ : milliseconds(0);
  return WorkerFor(status).IsReady(placed, folder, clock_.Monotonic(), patience);
}

FileWorker& LinuxFiles::WorkerFor(const struct stat& status) {
  return status.st_size < kLargeFile ? *small_ : *large_;
}

void LinuxFiles::Secure(const std::string& made, const std::string& source) {
  const auto folder = FolderToCreateIn(made);
  if (FileSystemOf(folder) != FileSystemOf(FolderToCreateIn(source))) FlushFolder(folder);
}

void LinuxFiles::Delete(const std::string& path) {
  Check(unlink(path.c_str()), path);
}

void LinuxFiles::Rename(const std::string& source, const std::string& destination) {
  CheckBoth(rename(source.c_str(), destination.c_str()), source, destination);
}

void LinuxFiles::Link(const std::string& existing, const std::string& link) {
  const auto linkTo = [&](const std::string& name) {
    return linkat(AT_FDCWD, existing.c_str(), AT_FDCWD, name.c_str(), 0);
  };
  if (linkTo(link) == 0) return;
  if (errno != EEXIST) return CheckBoth(-1, existing, link);
  const std::string temporary = TemporaryPath(FolderToCreateIn(link));
  CheckBoth(linkTo(temporary), existing, link);
  const int result = rename(temporary.c_str(), link.c_str());
  const int error = errno;
  unlink(temporary.c_str());  // a rename onto the same file leaves both names
  errno = error;
  CheckBoth(result, existing, link);
}

void LinuxFiles::CreateFolder(const std::string& path) {
  Check(mkdir(path.c_str(), 0777), path);
}

std::uint64_t LinuxFiles::FolderId(const std::string& path) {
  const auto status = StatusOf(path);
  return static_cast<std::uint64_t>(status.st_dev) << 48 ^
         static_cast<std::uint64_t>(status.st_ino);
}

int LinuxFiles::NameCount(const std::string& path) {
  return static_cast<int>(StatusOf(path).st_nlink);
}

std::int64_t LinuxFiles::FreeBytes(const std::string& folder) {
  struct statvfs status;
  Check(statvfs(folder.c_str(), &status), folder);
  return static_cast<std::int64_t>(status.f_bavail * status.f_frsize);
}

void LinuxFiles::RemoveTemporaries(const std::string& folder) {
  std::vector<std::string> left;
  const int error = ReadFolder(folder, Portion::kManyEntries, [&](const FolderEntry& entry) {
    const bool isOurs = IsTemporaryName(entry.name) || IsWholeName(entry.name);
    if (isOurs) left.push_back(JoinPath(folder, entry.name));
    return Reading::kContinue;
  });
  for (const auto& path : left) {
    IsWholeName(FileNameOf(path)) ? FinishOverwriting(path) : RemoveAbandoned(path);
  }
  if (error != 0 && error != ENOENT) ThrowFileFailure(error, folder);
}

std::size_t LinuxFiles::ReadBlock(const std::string& path, std::int64_t offset,
                                  std::span<char> buffer) {
  const Descriptor file = OpenToRead(path, Links::kRefused);
  if (!file) ThrowFileFailure(errno, path);
  const std::int64_t count = ReadFully(file.Get(), offset, buffer);
  if (count < 0) ThrowFileFailure(static_cast<int>(-count), path);
  return static_cast<std::size_t>(count);
}

std::string LinuxFiles::ReadAll(const std::string& path) {
  const Descriptor file = OpenToRead(path, Links::kFollowed);
  if (!file) ThrowFileFailure(errno, path);
  std::string content(static_cast<std::size_t>(kLargestText) + 1, '\0');
  const std::int64_t count = ReadFully(file.Get(), 0, content);
  if (count < 0) ThrowFileFailure(static_cast<int>(-count), path);
  if (count > kLargestText)
    throw Failure(failure_number::kOverflow, "Too large, 1 MiB at most: " + path);
  content.resize(static_cast<std::size_t>(count));
  return content;
}

void LinuxFiles::WriteAll(const std::string& path, std::string_view content) {
  clock_.CheckStop();  // the members of an archive come by thousands
  TemporaryFile file(FolderToCreateIn(path));
  if (file.Error() != 0) ThrowFileFailure(file.Error(), path);
  struct stat present;
  int error = file.Write(content);
  // What replaces a file keeps the permissions that the operator gave it.
  if (error == 0 && stat(path.c_str(), &present) == 0) error = file.SetMode(present.st_mode & 0777);
  if (error == 0) error = file.Commit(path, clock_.UtcNow());
  if (error != 0) ThrowFileFailure(error, path);
}

void LinuxFiles::Append(const std::string& path, std::string_view content) {
  const Descriptor file = OpenToAppend(path);
  if (!file) ThrowFileFailure(errno, path);
  struct stat before;
  Check(fstat(file.Get(), &before), path);
  const int error = WriteFully(file.Get(), content);
  if (error == 0) return;
  // The caller tries again: half of the content now would stand there twice then.
  [[maybe_unused]] const int shortened = ftruncate(file.Get(), before.st_size);
  ThrowFileFailure(error, path);
}

}  // namespace ostrel
