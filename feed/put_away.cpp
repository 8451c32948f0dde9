#include "feed/put_away.h"

#include <array>
#include <cerrno>
#include <unistd.h>

#include "base/failure.h"
#include "base/names.h"
#include "feed/placing.h"
#include "platform/linux/file_io.h"
#include "platform/linux/free_name.h"
#include "platform/linux/system_error.h"

namespace ostrel {
namespace {

using Afterwards = FolderSettings::Afterwards;

constexpr std::string_view kAside = ".feed-aside-";

/// To another file system.
void CopyAndDelete(const std::string& from, const std::string& folder, const std::string& name) {
  const auto source = OpenToRead(from, Links::kRefused);
  if (!source) ThrowFileFailure(errno, from);
  HiddenFile copy(folder, name);
  std::array<char, 64 * 1024> buffer;
  std::int64_t at = 0, count = 0;
  while ((count = ReadFully(source.Get(), at, buffer)) > 0) {
    copy.Write({buffer.data(), static_cast<std::size_t>(count)});
    at += count;
  }
  if (count < 0) ThrowFileFailure(static_cast<int>(-count), from);
  copy.Flush();
  Place(copy.placement());
  copy.Release();
  if (unlink(from.c_str()) != 0) ThrowFileFailure(errno, from);
}

}  // namespace

std::string AsidePath(const std::string& path) {
  const std::string name(FileNameOf(path));
  return JoinPath(FolderOf(path),
                  std::string(kAside) + name.substr(0, kLongestName - kAside.size()));
}

std::optional<std::string> PathOfAside(const std::string& aside) {
  const auto name = FileNameOf(aside);
  if (!name.starts_with(kAside)) return std::nullopt;
  return JoinPath(FolderOf(aside), name.substr(kAside.size()));
}

bool PutAway(const FolderSettings& settings, const std::string& path, LinuxFileHold& hold) {
  if (settings.afterwards == Afterwards::kMove) MakeFolders(settings.moveTo);
  const auto aside = AsidePath(path);
  if (!hold.MoveAside(aside)) return false;
  try {
    FinishPuttingAway(settings, aside);
  } catch (const Failure&) {
    hold.PutBack(aside);
    throw;
  }
  return true;
}

void FinishPuttingAway(const FolderSettings& settings, const std::string& aside) {
  if (settings.afterwards == Afterwards::kDelete) {
    if (unlink(aside.c_str()) != 0) ThrowFileFailure(errno, aside);
    return;
  }
  const std::string name(FileNameOf(PathOfAside(aside).value_or(aside)));
  auto path = JoinPath(settings.moveTo, name);
  const int error = RenameToFree(aside, path);
  if (error == EXDEV) return CopyAndDelete(aside, settings.moveTo, name);
  if (error != 0) ThrowFileFailure(error, path);
}

}  // namespace ostrel
