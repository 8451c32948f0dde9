#include "platform/linux/set_aside.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include "base/names.h"
#include "platform/linux/file_io.h"
#include "platform/linux/system_error.h"

namespace ostrel {
namespace {

constexpr std::string_view kEnding = ".db";
/// What the library keeps beside a database. It goes first, and even alone: beside another database
/// it would be taken for that one's, and played back into it.
constexpr std::array kBeside = {"-wal", "-shm", "-journal", ""};

bool Lies(const std::string& path) {
  struct stat status;
  if (lstat(path.c_str(), &status) == 0) return true;
  if (errno != ENOENT) ThrowFileFailure(errno, path);
  return false;
}

std::string FreePath(const std::string& path, UtcTime now) {
  const auto stem = path.substr(0, path.size() - (path.ends_with(kEnding) ? kEnding.size() : 0));
  const auto dated = fmt::format("{}.damaged-{:%Y-%m-%d-%H%M%S}", stem,
                                 std::chrono::floor<std::chrono::seconds>(now));
  auto free = dated;
  for (int n = 2; Lies(free.append(kEnding)); ++n) free = fmt::format("{}-{}", dated, n);
  return free;
}

}  // namespace

std::string SetAside(const std::string& path, UtcTime now) {
  const bool isThere = Lies(path);
  const auto aside = FreePath(path, now);
  for (const auto* const beside : kBeside) {
    const auto from = path + beside;
    if (Lies(from) && rename(from.c_str(), (aside + beside).c_str()) != 0)
      ThrowFileFailure(errno, from);
  }
  FlushFolder(FolderToCreateIn(path));
  return isThere ? std::string(FileNameOf(aside)) : "";
}

}  // namespace ostrel
