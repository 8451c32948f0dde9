#include "intake/pending_files.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <utility>

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
  const bool canRecord = RunStep(parts_.reporting, kCategory, [this] {
    MakeFolders();
    ProbeRecord();
  });
  if (!canRecord) return;
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
  for (const auto& folder : folders) parts_.files.RemoveTemporaries(folder);
}

/// Where nothing can be recorded, what lies in RtXmit may be the only copy there is.
void PendingFiles::ProbeRecord() {
  const auto file = Root() + "/.probe";
  parts_.files.WriteAll(file, "");
  parts_.files.Delete(file);
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

std::string PendingFiles::MoveBack(Priority p, const std::string& path,
                                   const std::string& wantedName) {
  const auto name = FirstFreeName(
      wantedName, [&](const std::string& n) { return parts_.files.Exists(InHoldingFolder(p, n)); });
  TryStep([&] { Keep(path, BackFolderOf(p) + "/" + name); });
  parts_.copy.MoveFile(path, InHoldingFolder(p, name));
  back_[p].insert(name);
  return InHoldingFolder(p, name);
}

void PendingFiles::Return(Priority p, const std::string& name) {
  if (IsChecked(parts_.setup.chkOverWrite[p])) {
    for (const auto& other : std::set(back_[p])) {
      if (StripExtension(other) == StripExtension(name)) DiscardReturned(p, other);
    }
  }
  const auto back = MoveBack(p, parts_.values.InTransmitFolder(name), name);
  parts_.files.Secure(back, FolderOf(p) + "/" + name);
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
  if (back_[p].erase(name) > 0) Delete(BackFolderOf(p) + "/" + name);
}

void PendingFiles::ClearTransmitFolder() {
  RunStep(parts_.reporting, kCategory, [&] {
    for (const auto& name : parts_.files.ListFiles(parts_.values.TransmitFolder()))
      parts_.files.Delete(parts_.values.InTransmitFolder(name));
  });
}

void PendingFiles::Add(Priority p, const std::string& name, const std::string& source) {
  auto link = FirstFreeName(
      name, [&](const std::string& n) { return parts_.files.Exists(FolderOf(p) + "/" + n); });
  if (Record(parts_.values.InTransmitFolder(name), FolderOf(p) + "/" + link, source))
    links_[p][name].push_back(std::move(link));
}

bool PendingFiles::Record(const std::string& file, const std::string& record,
                          const std::string& source) {
  try {
    Keep(file, record);
    parts_.files.Secure(record, source);
    toldOfNone_ = false;
    return true;
  } catch (const Failure& failure) {
    if (IsDiskFull(failure) || !parts_.files.Exists(file)) throw;
    TellOnce(toldOfNone_, "What is queued is not kept over a power failure: " + failure.text());
    return false;
  }
}

/// Somebody may have removed the folders.
void PendingFiles::Keep(const std::string& file, const std::string& record) {
  const auto link = [&] { parts_.files.Link(file, record); };
  if (TryStep(link)) return;
  if (!parts_.files.Exists(std::string(ostrel::FolderOf(record)))) {
    MakeFolders();
    if (TryStep(link)) return;
  }
  parts_.copy.CopyFile(file, record);
  TellOnce(toldOfCopies_,
           "No link from RtXmit into .pending: what is queued is recorded by copies.");
}

void PendingFiles::TellOnce(bool& told, const std::string& text) {
  if (!std::exchange(told, true)) parts_.reporting.WriteLog(kCategory, text);
}

void PendingFiles::Replace(Priority p, const std::string& replaced, const std::string& name,
                           const std::string& source) {
  const auto links = links_[p].find(replaced);
  if (links == links_[p].end()) return Add(p, name, source);
  const std::string old = links->second.back();
  Add(p, name, source);
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

/// What is gone already went with its folder.
void PendingFiles::Delete(const std::string& record) {
  RunStep(parts_.reporting, kCategory, [&] {
    if (parts_.files.Exists(record)) parts_.files.Delete(record);
  });
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
