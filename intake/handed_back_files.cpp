#include "intake/handed_back_files.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/names.h"
#include "base/text.h"
#include "intake/missing_folder.h"

namespace ostrel {

namespace {
constexpr const char* kCategory = "Pending";
}

void HandedBackFiles::HandBack(const IsLiving& isLiving) {
  MakeFolders();
  for (const Priority p : AllPriorities())
    RunStep(parts_.reporting, kCategory, [&] { HandBack(p, isLiving); });
}

void HandedBackFiles::MakeFolders() {
  const auto make = [this](const std::string& folder) {
    if (!parts_.files.Exists(folder)) parts_.files.CreateFolder(folder);
    parts_.files.RemoveTemporaries(folder);
  };
  make(parts_.records.Root() + "/back");
  for (const Priority p : AllPriorities()) make(FolderOf(p));
}

void HandedBackFiles::HandBack(Priority p, const IsLiving& isLiving) {
  auto files = FilesOf(p, isLiving);
  std::stable_sort(files.begin(), files.end(),
                   [](const Recorded& a, const Recorded& b) { return a.time > b.time; });
  const auto age = parts_.values.purgeAge;
  std::set<std::string, std::less<>> products;
  for (const auto& file : files) {
    const bool isTooOld = age > milliseconds(0) && parts_.clock.UtcNow() - file.time > age;
    const bool isNewest = products.emplace(StripExtension(file.name)).second;
    if (isTooOld || (IsChecked(parts_.setup.chkOverWrite[p]) && !isNewest)) {
      Discard(p, file, isTooOld ? Fate::kPurged : Fate::kReplaced);
    } else if (!file.isBack) {
      RunStep(parts_.reporting, kCategory,
              [&] { GiveBack(parts_.records.PathOf(p, file.name), p, file.name); });
    }
  }
}

std::vector<HandedBackFiles::Recorded> HandedBackFiles::FilesOf(Priority p,
                                                                const IsLiving& isLiving) {
  std::vector<Recorded> files;
  for (const auto& record : parts_.records.List(p)) {
    if (isLiving(p, record)) continue;
    files.push_back({record, parts_.files.Status(parts_.records.PathOf(p, record)).written, false});
  }
  for (const auto& name : parts_.files.ListFiles(FolderOf(p))) {
    names_[p].insert(name);
    if (parts_.files.Exists(InHoldingFolder(p, name))) {
      files.push_back({name, parts_.files.Status(InHoldingFolder(p, name)).written, true});
    } else {
      Taken(p, name);
    }
  }
  return files;
}

std::string HandedBackFiles::GiveBack(const std::string& path, Priority p,
                                      const std::string& name) {
  const auto freeName = FirstFreeName(
      name, [&](const std::string& n) { return parts_.files.Exists(InHoldingFolder(p, n)); });
  auto placed = InHoldingFolder(p, freeName);
  const auto mark = JoinPath(FolderOf(p), freeName);
  RestoreFolder(parts_.files, parts_.reporting, parts_.values.HoldingFolder(p.number()));
  TryStep([&] { parts_.records.Keep(path, mark); });
  try {
    parts_.copy.MoveFile(path, placed);
  } catch (const std::exception&) {
    parts_.records.Delete(mark);
    throw;
  }
  names_[p].insert(freeName);
  parts_.history.Move(path, placed);
  return placed;
}

void HandedBackFiles::Discard(Priority p, const Recorded& file, Fate fate) {
  parts_.history.EndAt(
      file.isBack ? InHoldingFolder(p, file.name) : parts_.records.PathOf(p, file.name), fate);
  if (!file.isBack) return parts_.records.Drop(p, file.name);
  RunStep(parts_.reporting, kCategory, [&] {
    parts_.files.Delete(InHoldingFolder(p, file.name));
    Taken(p, file.name);
  });
}

bool HandedBackFiles::HoldsProduct(Priority p, const std::string& name) const {
  return std::any_of(names_[p].begin(), names_[p].end(), [&](const std::string& other) {
    return StripExtension(ToUpper(other)) == StripExtension(ToUpper(name)) &&
           parts_.files.Exists(InHoldingFolder(p, other));
  });
}

void HandedBackFiles::Taken(Priority p, const std::string& name) {
  if (names_[p].erase(name) > 0) parts_.records.Delete(JoinPath(FolderOf(p), name));
}

std::string HandedBackFiles::FolderOf(Priority p) const {
  return fmt::format("{}/back/{}", parts_.records.Root(), p.number());
}

std::string HandedBackFiles::InHoldingFolder(Priority p, const std::string& name) const {
  return JoinPath(parts_.values.HoldingFolder(p.number()), name);
}

}  // namespace ostrel
