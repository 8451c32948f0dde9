#include "feed/opened_file.h"

#include <cerrno>
#include <fmt/format.h>

#include "feed/placing.h"
#include "platform/linux/file_io.h"
#include "platform/linux/system_error.h"

namespace ostrel {
namespace {

template <typename Step>
auto Readable(Step&& step) {
  try {
    return step();
  } catch (const Failure& failure) {
    throw UnreadableFile(failure.number(), failure.text());
  }
}

}  // namespace

std::string StateOf(const struct stat& status) {
  return fmt::format("{}-{}.{:09}", status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec);
}

std::optional<struct stat> StatusOf(const std::string& path) {
  struct stat status;
  if (lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size == 0)
    return std::nullopt;
  return status;
}

OpenedFile OpenFileOf(const std::string& path) {
  return Readable([&] {
    OpenedFile opened{OpenToRead(path, Links::kRefused), {}, LeaseAnswer::kNone};
    if (!opened.file || fstat(opened.file.Get(), &opened.status) != 0)
      ThrowFileFailure(errno, path);
    if (!S_ISREG(opened.status.st_mode)) ThrowFileFailure(EACCES, path);
    opened.lease = TakeLease(opened.file.Get(), Others::kAny);
    return opened;
  });
}

std::string ContentOf(const OpenedFile& opened, const std::string& path) {
  return Readable([&] { return ReadOpened(opened.file.Get(), path); });
}

}  // namespace ostrel
