#include "intake/entry_records.h"

#include <fmt/format.h>
#include <utility>

#include "base/names.h"

namespace ostrel {

namespace {
constexpr const char* kCategory = "Pending";
}

void EntryRecords::Prepare() {
  MakeFolders();
  parts_.files.RemoveTemporaries(Root());
  for (const Priority p : AllPriorities()) parts_.files.RemoveTemporaries(FolderOf(p));
  const auto probe = Root() + "/.probe";
  parts_.files.WriteAll(probe, "");
  parts_.files.Delete(probe);
}

void EntryRecords::MakeFolders() {
  const auto make = [this](const std::string& folder) {
    if (!parts_.files.Exists(folder)) parts_.files.CreateFolder(folder);
  };
  make(Root());
  for (const Priority p : AllPriorities()) make(FolderOf(p));
}

std::string EntryRecords::Make(Priority p, const std::string& name, const std::string& file,
                               const std::string& source) {
  auto record =
      FirstFreeName(name, [&](const std::string& n) { return parts_.files.Exists(PathOf(p, n)); });
  try {
    Keep(file, PathOf(p, record));
    parts_.files.Secure(PathOf(p, record), source);
    toldOfNone_ = false;
    return record;
  } catch (const Failure& failure) {
    if (IsDiskFull(failure) || !parts_.files.Exists(file)) throw;
    TellOnce(toldOfNone_, "What is queued is not kept over a power failure: " + failure.text());
    return {};
  }
}

std::string EntryRecords::MakeCopy(Priority p, const std::string& file, const std::string& name) {
  const auto record =
      FirstFreeName(name, [&](const std::string& n) { return parts_.files.Exists(PathOf(p, n)); });
  if (!parts_.files.Exists(FolderOf(p))) MakeFolders();
  parts_.copy.CopyFile(file, PathOf(p, record));
  return PathOf(p, record);
}

/// Somebody may have removed the folders.
void EntryRecords::Keep(const std::string& file, const std::string& kept) {
  const auto link = [&] { parts_.files.Link(file, kept); };
  if (TryStep(link)) return;
  if (!parts_.files.Exists(std::string(ostrel::FolderOf(kept)))) {
    MakeFolders();
    if (TryStep(link)) return;
  }
  parts_.copy.CopyFile(file, kept);
  TellOnce(toldOfCopies_,
           "No link from RtXmit into .pending: what is queued is recorded by copies.");
}

void EntryRecords::TellOnce(bool& told, const std::string& text) {
  if (!std::exchange(told, true)) parts_.reporting.WriteLog(kCategory, text);
}

void EntryRecords::Delete(const std::string& path) {
  RunStep(parts_.reporting, kCategory, [&] {
    if (parts_.files.Exists(path)) parts_.files.Delete(path);
  });
}

std::string EntryRecords::FolderOf(Priority p) const {
  return fmt::format("{}/{}", Root(), p.number());
}

std::string EntryRecords::PathOf(Priority p, const std::string& record) const {
  return JoinPath(FolderOf(p), record);
}

}  // namespace ostrel
