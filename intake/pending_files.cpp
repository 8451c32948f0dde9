#include "intake/pending_files.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <vector>

#include "base/names.h"
#include "base/numbers.h"
#include "base/text.h"
#include "intake/match_pattern.h"

namespace ostrel {

namespace {

constexpr const char* kCategory = "Pending";

/// A link in the record and its file's time.
struct Recorded {
  std::string link;
  UtcTime time;
};

}  // namespace

milliseconds PurgeAge(const Setup& setup) {
  constexpr double kMillisecondsPerHour = 3'600'000;
  constexpr double kLongest = 24.0 * 366 * 1000;  // hours
  const double hours = std::fmin(LeadingNumber(setup.txtPurgeTime.Get()), kLongest);
  return milliseconds(static_cast<long long>(hours * kMillisecondsPerHour));
}

void PendingFiles::HandBack() {
  RunStep(parts_.reporting, kCategory, [this] {
    if (!parts_.files.Exists(Root())) parts_.files.CreateFolder(Root());
    for (const Priority p : AllPriorities()) {
      if (!parts_.files.Exists(FolderOf(p))) parts_.files.CreateFolder(FolderOf(p));
    }
    ProbeLinks();
  });
  if (!hasLinks_) return;
  for (const Priority p : AllPriorities()) HandBack(p);
  ClearTransmitFolder();
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
    std::vector<Recorded> files;
    for (const auto& link : parts_.files.ListFiles(FolderOf(p)))
      files.push_back({link, parts_.files.LastWriteTime(FolderOf(p) + "/" + link)});
    std::sort(files.begin(), files.end(),
              [](const Recorded& a, const Recorded& b) { return a.time > b.time; });

    const auto age = PurgeAge(parts_.setup);
    std::set<std::string, std::less<>> products;
    for (const auto& [link, time] : files) {
      const bool tooOld = age > milliseconds(0) && parts_.clock.UtcNow() - time > age;
      const bool isNewest = products.emplace(StripExtension(link)).second;
      if (tooOld || (IsChecked(parts_.setup.chkOverWrite[p]) && !isNewest)) {
        Remove(p, link);
      } else {
        GiveBack(p, link);
      }
    }
  });
}

void PendingFiles::GiveBack(Priority p, const std::string& link) {
  RunStep(parts_.reporting, kCategory, [&] {
    const auto folder = parts_.values.HoldingFolder(p.number());
    const auto name = FirstFreeName(
        link, [&](const std::string& n) { return parts_.files.Exists(folder + "/" + n); });
    parts_.files.Rename(FolderOf(p) + "/" + link, folder + "/" + name);
    if (MatchPattern(ToUpper(name), "*.ZIP*")) archives_.insert(folder + "/" + name);
  });
}

void PendingFiles::ClearTransmitFolder() {
  RunStep(parts_.reporting, kCategory, [&] {
    for (const auto& name : parts_.files.ListFiles(parts_.values.TransmitFolder()))
      parts_.files.Delete(parts_.values.TransmitFolder() + "/" + name);
  });
}

void PendingFiles::Add(Priority p, const std::string& name) {
  if (!hasLinks_) return;
  RunStep(parts_.reporting, kCategory, [&] {
    auto link = FirstFreeName(
        name, [&](const std::string& n) { return parts_.files.Exists(FolderOf(p) + "/" + n); });
    parts_.files.Link(parts_.values.TransmitFolder() + "/" + name, FolderOf(p) + "/" + link);
    links_[p][name].push_back(std::move(link));
  });
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

}  // namespace ostrel
