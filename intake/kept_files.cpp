#include "intake/kept_files.h"

#include <fmt/format.h>

#include "base/names.h"
#include "intake/old_files.h"

namespace ostrel {

namespace {

constexpr const char* kCategory = "Kept";
constexpr std::size_t kMostFiles = 10'000;

}  // namespace

void KeptFiles::Keep(const std::string& path, const std::string& name) {
  if (parts_.rules.AllAreKnown() || !HasRoom()) return;
  const auto folder = parts_.values.KeptFolder();
  if (!parts_.files.Exists(folder)) parts_.files.CreateFolder(folder);
  const auto freeName = FirstFreeName(
      name, [&](const std::string& candidate) { return parts_.files.Exists(PathOf(candidate)); });
  parts_.copy.CopyFile(path, PathOf(freeName));
  parts_.files.Secure(PathOf(freeName), path);
  ++*count_;
}

bool KeptFiles::HasRoom() {
  if (!count_) count_ = parts_.files.ListFiles(parts_.values.KeptFolder()).size();
  if (*count_ < kMostFiles) return true;
  if (!toldFull_) {
    toldFull_ = true;
    parts_.reporting.WriteLog(
        kCategory, fmt::format("KvData/RtKept is full ({} files): what no rule names is deleted.",
                               kMostFiles));
  }
  return false;
}

void KeptFiles::GiveBack() {
  if (!parts_.rules.AllAreKnown() || parts_.values.ingestPath.empty()) return;
  RunStep(parts_.reporting, kCategory, [this] {
    const auto names = parts_.files.ListFiles(parts_.values.KeptFolder());
    if (names.empty()) return;
    std::size_t returned = 0;
    for (const auto& name : names) {
      if (IsTooOld(PathOf(name))) {
        parts_.files.Delete(PathOf(name));
      } else {
        Return(name);
        ++returned;
      }
    }
    parts_.reporting.WriteLog(
        kCategory, fmt::format("The rule lists are there again: {} of {} files went back "
                               "to the ingest folder.",
                               returned, names.size()));
  });
  count_.reset();
}

bool KeptFiles::IsTooOld(const std::string& path) {
  const auto age = PurgeAge(parts_.setup);
  return age > milliseconds(0) && parts_.clock.UtcNow() - parts_.files.Status(path).written > age;
}

void KeptFiles::Return(const std::string& name) {
  const auto& ingestPath = parts_.values.ingestPath;
  const auto freeName = FirstFreeName(name, [&](const std::string& candidate) {
    return parts_.files.Exists(ingestPath + candidate);
  });
  parts_.copy.MoveFile(PathOf(name), ingestPath + freeName);
}

std::string KeptFiles::PathOf(const std::string& name) const {
  return JoinPath(parts_.values.KeptFolder(), name);
}

}  // namespace ostrel
