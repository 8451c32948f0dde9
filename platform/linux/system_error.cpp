#include "platform/linux/system_error.h"

#include <cerrno>
#include <cstdint>
#include <sys/stat.h>
#include <system_error>

#include "base/failure.h"
#include "base/names.h"
#include "platform/files.h"

namespace ostrel {
namespace {

struct KnownError {
  std::int32_t number;
  std::string text;
};

KnownError Known(int error) {
  switch (error) {
    case ENOENT:
      return {failure_number::kFileNotFound, "File not found"};
    case EACCES:
    case EPERM:
    case EBUSY:
    case EWOULDBLOCK:
    case ETXTBSY:
      return {failure_number::kPermissionDenied, "Permission denied"};
    case EISDIR:
    case ENOTDIR:
    case EEXIST:
    case ENOTEMPTY:
      return {failure_number::kPathAccess, "Path/File access error"};
    case ENOSPC:
    case EDQUOT:
      return {failure_number::kDiskFull, "Disk full"};
    case EIO:
      return {failure_number::kDeviceError, "Device I/O error"};
    default:
      return {error, std::generic_category().message(error)};
  }
}

bool FolderIsMissing(const std::string& path) {
  const std::string folder(FolderOf(path));
  struct stat status;
  return !folder.empty() && stat(folder.c_str(), &status) != 0 && errno == ENOENT;
}

}  // namespace

void ThrowSystemFailure(int error) {
  auto [number, text] = Known(error);
  throw Failure(number, std::move(text));
}

void ThrowFileFailure(int error, const std::string& path) {
  auto [number, text] = Known(error);
  if (error == ENOENT && FolderIsMissing(path)) {
    number = failure_number::kPathNotFound;
    text = "Path not found";
  }
  throw Failure(number, text + ": " + path);
}

int SourceCopyCode(int error) {
  switch (error) {
    case ENOENT:
      return copy_code::kFileNotFound;
    case ENOTDIR:
      return copy_code::kPathNotFound;
    case EACCES:
    case EPERM:
    case EISDIR:
      return copy_code::kAccessDenied;
    case EROFS:
      return copy_code::kWriteProtected;
    case EBUSY:
    case ETXTBSY:
    case EAGAIN:
      return copy_code::kInUse;
    case ENOSPC:
    case EDQUOT:
      return copy_code::kDiskFull;
    case ENAMETOOLONG:
      return copy_code::kNameTooLong;
    case EIO:
      return copy_code::kDeviceError;
    default:
      return error;
  }
}

int DestinationCopyCode(int error) {
  return error == ENOENT ? copy_code::kPathNotFound : SourceCopyCode(error);
}

}  // namespace ostrel
