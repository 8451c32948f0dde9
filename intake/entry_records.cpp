#include "intake/entry_records.h"

#include <algorithm>
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
  undeleted_.Load();
  root_ = parts_.files.FolderId(Root());
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
  try {
    auto record = FreeName(p, name);
    Keep(file, PathOf(p, record));
    if (root_ == 0) TryStep([&] { root_ = parts_.files.FolderId(Root()); });  // not at the start
    parts_.files.Secure(PathOf(p, record), source);
    toldOfNone_ = false;
    return record;
  } catch (const Failure& failure) {
    if (!parts_.files.Exists(file)) throw;
    TellOnce(toldOfNone_, "What is queued is not kept over a power failure: " + failure.text());
    return {};
  }
}

std::string EntryRecords::FreeName(Priority p, const std::string& name) {
  return FirstFreeName(name,
                       [&](const std::string& n) { return parts_.files.Exists(PathOf(p, n)); });
}

std::string EntryRecords::MakeOf(Priority p, const std::string& file, const std::string& name) {
  auto record = PathOf(p, FreeName(p, name));
  Keep(file, record);
  return record;
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

void EntryRecords::Drop(Priority p, const std::string& record) {
  const auto path = PathOf(p, record);
  const bool isGone = RunStep(parts_.reporting, kCategory, [&] {
    if (parts_.files.Exists(path)) parts_.files.Delete(path);
  });
  if (!isGone) undeleted_.Add(path);
}

bool EntryRecords::WasReplaced() {
  auto present = root_;
  try {
    present = parts_.files.FolderId(Root());
  } catch (const Failure& failure) {
    if (failure.IsMissing()) present = 0;
  }
  return std::exchange(root_, present) != present && present != 0;
}

bool EntryRecords::HasCopyOf(const std::string& file) {
  const auto size = parts_.files.Status(file).size;
  const auto priorities = AllPriorities();
  return std::any_of(priorities.begin(), priorities.end(), [&](Priority p) {
    const auto record = PathOf(p, std::string(FileNameOf(file)));
    return parts_.files.Exists(record) && parts_.files.Status(record).size == size;
  });
}

std::string EntryRecords::FolderOf(Priority p) const {
  return fmt::format("{}/{}", Root(), p.number());
}

std::string EntryRecords::PathOf(Priority p, const std::string& record) const {
  return JoinPath(FolderOf(p), record);
}

}  // namespace ostrel
