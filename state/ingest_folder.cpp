#include "state/ingest_folder.h"

#include <filesystem>
#include <fmt/format.h>

#include "base/failure.h"

namespace ostrel {

namespace {

/// Without "." and "..", and with a separator at its end: what a path begins with contains it.
std::string Plain(const std::string& folder) {
  return (std::filesystem::path(folder) / "").lexically_normal().string();
}

/// One of an account, root's among them, or the folder of them all; not what lies deeper.
bool IsHomeFolder(const std::string& plain) {
  const auto folder = std::filesystem::path(plain).parent_path();  // without the separator
  const auto above = folder.parent_path();
  const bool isAtTheTop = above == above.root_path();
  return above.relative_path() == "home" ||
         (isAtTheTop && (folder.filename() == "home" || folder.filename() == "root"));
}

/// KvData itself, and what the station makes in it; RxFiles is for received files.
bool IsKept(const std::string& plain, const std::string& dataRoot) {
  if (!plain.starts_with(dataRoot)) return false;
  const auto inside = plain.substr(dataRoot.size());
  return inside.empty() || inside.starts_with("Rt") || inside.starts_with('.');
}

[[noreturn]] void Refuse(const std::string& folder, const char* reason) {
  throw Failure(failure_number::kInvalidArgument,
                fmt::format("Files are not taken from {}: {}", folder, reason));
}

}  // namespace

void CheckIngestFolder(const std::string& folder, const std::string& programFolder) {
  if (folder.empty()) return;
  const auto plain = Plain(folder), station = Plain(programFolder);
  if (station.starts_with(plain)) Refuse(folder, "the station lies there");
  if (IsKept(plain, station + "KvData/")) Refuse(folder, "the station keeps its own files there");
  if (IsHomeFolder(plain)) Refuse(folder, "it is a home folder");
}

}  // namespace ostrel
