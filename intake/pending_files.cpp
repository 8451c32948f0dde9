#include "intake/pending_files.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

#include "base/names.h"
#include "base/numbers.h"

namespace ostrel {

namespace {

constexpr const char* kCategory = "Pending";

}  // namespace

milliseconds PurgeAge(const Setup& setup) {
  constexpr double kMillisecondsPerHour = 3'600'000;
  constexpr double kLongest = 24.0 * 366 * 1000;  // hours
  const double hours = std::fmin(LeadingNumber(setup.txtPurgeTime.Get()), kLongest);
  return milliseconds(static_cast<long long>(hours * kMillisecondsPerHour));
}

void PendingFiles::HandBack() {
  RunStep(parts_.reporting, kCategory, [this] {
    MakeFolders();
    ProbeLinks();
  });
  if (!hasLinks_) return;
  for (const Priority p : AllPriorities()) HandBack(p);
  ClearTransmitFolder();
}

void PendingFiles::MakeFolders() {
  std::vector<std::string> folders = {Root(), Root() + "/back"};
  for (const Priority p : AllPriorities()) {
    folders.push_back(FolderOf(p));
    folders.push_back(BackFolderOf(p));
  }
  for (const auto& folder : folders) {
    if (!parts_.files.Exists(folder)) parts_.files.CreateFolder(folder);
  }
  parts_.files.RemoveTemporaries(Root());
}

void PendingFiles::ProbeLinks() {
  const auto file = Root() + "/.probe";
  const auto link = Root() + "/.probe-link";
  parts_.files.WriteAll(file, "");
  hasLinks_ = TryStep([&] { parts_.files.Link(file, link); });
  TryStep([&] { parts_.files.Delete(link); });
  TryStep([&] { parts_.files.Delete(file); });
  if (!hasLinks_) {
    parts_.reporting.WriteLog(kCategory,
                              "The file system has no hard links: what is queued is not kept over "
                              "a power failure.");
  }
}

void PendingFiles::HandBack(Priority p) {
  RunStep(parts_.reporting, kCategory, [&] {
    auto files = RecordOf(p);
    std::stable_sort(files.begin(), files.end(),
                     [](const Recorded& a, const Recorded& b) { return a.time > b.time; });
    const auto age = PurgeAge(parts_.setup);
    std::set<std::string, std::less<>> products;
    for (const auto& file : files) {
      const bool tooOld = age > milliseconds(0) && parts_.clock.UtcNow() - file.time > age;
      const bool isNewest = products.emplace(StripExtension(file.name)).second;
      if (tooOld || (IsChecked(parts_.setup.chkOverWrite[p]) && !isNewest)) {
        file.isBack ? DiscardReturned(p, file.name) : Remove(p, file.name);
      } else if (!file.isBack) {
        GiveBack(p, file.name);
      }
    }
  });
}

std::vector<PendingFiles::Recorded> PendingFiles::RecordOf(Priority p) {
  std::vector<Recorded> files;
  for (const auto& link : parts_.files.ListFiles(FolderOf(p)))
    files.push_back({link, parts_.files.Status(FolderOf(p) + "/" + link).written, false});
  for (const auto& name : parts_.files.ListFiles(BackFolderOf(p))) {
    back_[p].insert(name);
    if (parts_.files.Exists(InHoldingFolder(p, name))) {
      files.push_back({name, parts_.files.Status(InHoldingFolder(p, name)).written, true});
    } else {
      Taken(p, name);
    }
  }
  return files;
}

void PendingFiles::GiveBack(Priority p, const std::string& link) {
  RunStep(parts_.reporting, kCategory, [&] { MoveBack(p, FolderOf(p) + "/" + link, link); });
}

void PendingFiles::MoveBack(Priority p, const std::string& path, const std::string& wantedName) {
  const auto name = FirstFreeName(
      wantedName, [&](const std::string& n) { return parts_.files.Exists(InHoldingFolder(p, n)); });
  if (hasLinks_) parts_.files.Link(path, BackFolderOf(p) + "/" + name);
  parts_.files.Rename(path, InHoldingFolder(p, name));
  back_[p].insert(name);
}

void PendingFiles::Return(Priority p, const std::string& name) {
  if (IsChecked(parts_.setup.chkOverWrite[p])) {
    for (const auto& other : std::set(back_[p])) {
      if (StripExtension(other) == StripExtension(name)) DiscardReturned(p, other);
    }
  }
  MoveBack(p, parts_.values.InTransmitFolder(name), name);
  Retire(p, name);
}

void PendingFiles::SendAgain(Priority p, const std::string& name) {
  const auto links = links_[p].find(name);
  if (links == links_[p].end()) return;
  parts_.reporting.WriteLog(
      kCategory, fmt::format("{} met a file of its name on the air and is sent again.", name));
  GiveBack(p, links->second.front());  // what cannot go back now does so at the next start
  links->second.pop_front();
  if (links->second.empty()) links_[p].erase(links);
}

void PendingFiles::DiscardReturned(Priority p, const std::string& name) {
  RunStep(parts_.reporting, kCategory, [&] {
    parts_.files.Delete(InHoldingFolder(p, name));
    Taken(p, name);
  });
}

void PendingFiles::Taken(Priority p, const std::string& name) {
  if (back_[p].erase(name) == 0 || !hasLinks_) return;
  RunStep(parts_.reporting, kCategory, [&] { parts_.files.Delete(BackFolderOf(p) + "/" + name); });
}

void PendingFiles::ClearTransmitFolder() {
  RunStep(parts_.reporting, kCategory, [&] {
    for (const auto& name : parts_.files.ListFiles(parts_.values.TransmitFolder()))
      parts_.files.Delete(parts_.values.InTransmitFolder(name));
  });
}

void PendingFiles::Add(Priority p, const std::string& name) {
  if (!hasLinks_) return;
  auto link = FirstFreeName(
      name, [&](const std::string& n) { return parts_.files.Exists(FolderOf(p) + "/" + n); });
  parts_.files.Link(parts_.values.InTransmitFolder(name), FolderOf(p) + "/" + link);
  links_[p][name].push_back(std::move(link));
}

void PendingFiles::Replace(Priority p, const std::string& replaced, const std::string& name) {
  const auto links = links_[p].find(replaced);
  if (links == links_[p].end()) return Add(p, name);
  const std::string old = links->second.back();
  Add(p, name);
  std::erase(links->second, old);
  if (links->second.empty()) links_[p].erase(links);
  Remove(p, old);
}

void PendingFiles::Retire(Priority p, const std::string& name) {
  const auto links = links_[p].find(name);
  if (links == links_[p].end()) return;
  Remove(p, links->second.front());
  links->second.pop_front();
  if (links->second.empty()) links_[p].erase(links);
}

void PendingFiles::Drop(Priority p, const std::string& name) {
  const auto links = links_[p].find(name);
  if (links == links_[p].end()) return;
  Remove(p, links->second.back());
  links->second.pop_back();
  if (links->second.empty()) links_[p].erase(links);
}

void PendingFiles::Purged(const std::string& name) {
  for (const Priority p : AllPriorities()) Drop(p, name);
}

void PendingFiles::Remove(Priority p, const std::string& link) {
  RunStep(parts_.reporting, kCategory, [&] { parts_.files.Delete(FolderOf(p) + "/" + link); });
}

std::string PendingFiles::FolderOf(Priority p) const {
  return fmt::format("{}/{}", Root(), p.number());
}

std::string PendingFiles::BackFolderOf(Priority p) const {
  return fmt::format("{}/back/{}", Root(), p.number());
}

std::string PendingFiles::InHoldingFolder(Priority p, const std::string& name) const {
  return JoinPath(parts_.values.HoldingFolder(p.number()), name);
}

}  // namespace ostrel
