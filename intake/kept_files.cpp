#include "intake/kept_files.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>
#include <vector>

#include "base/names.h"

namespace ostrel {

namespace {

constexpr const char* kCategory = "Kept";
constexpr std::size_t kMostFiles = 10'000;
constexpr std::size_t kFilesThatGo = 1'000;  // so that the folder is seldom looked through

}  // namespace

std::string KeptFiles::Keep(const std::string& path, const std::string& name) {
  if (!IsKeeping()) return {};
  const auto folder = parts_.values.KeptFolder();
  if (!parts_.files.Exists(folder)) parts_.files.CreateFolder(folder);
  MakeRoom();
  auto kept = PathOf(FirstFreeName(
      name, [&](const std::string& candidate) { return parts_.files.Exists(PathOf(candidate)); }));
  parts_.copy.PlaceFile(path, kept);
  parts_.files.Secure(kept, path);
  ++*count_;
  return kept;
}

void KeptFiles::MakeRoom() {
  if (count_ && *count_ < kMostFiles) return;
  auto names = OldestFirst();
  count_ = names.size();
  if (*count_ < kMostFiles) return;
  names.resize(kFilesThatGo);
  for (const auto& name : names) Drop(name);
  *count_ -= kFilesThatGo;
  parts_.reporting.WriteLog(
      kCategory, fmt::format("KvData/RtKept was full ({} files): the {} oldest are deleted.",
                             kMostFiles, kFilesThatGo));
}

void KeptFiles::BeginGivingBack() {
  if (!parts_.rules.AllAreKnown() || !waiting_.empty()) return;
  RunStep(parts_.reporting, kCategory, [this] { waiting_ = OldestFirst(); });
  if (waiting_.empty()) return;
  parts_.reporting.WriteLog(
      kCategory,
      fmt::format("The rule lists are there again: {} files go back to the ingest folder.",
                  waiting_.size()));
}

/// Of two versions of a product the later one comes last, as they were received.
std::deque<std::string> KeptFiles::OldestFirst() {
  std::vector<std::pair<UtcTime, std::string>> files;
  for (const auto& name : parts_.files.ListFiles(parts_.values.KeptFolder()))
    files.emplace_back(parts_.files.Status(PathOf(name)).written, name);
  std::sort(files.begin(), files.end());
  std::deque<std::string> names;
  for (auto& [written, name] : files) names.push_back(std::move(name));
  return names;
}

void KeptFiles::GiveOneBack() {
  if (waiting_.empty()) return;
  const auto name = waiting_.front();
  waiting_.pop_front();
  const auto failure = FailureIn([&] { Return(name); });
  if (!failure) return;
  parts_.reporting.ReportError(*failure, kCategory, " File Name: " + PathOf(name));
  parts_.obstacles.Refuse(PathOf(name), failure->text());
  waiting_.clear();
}

void KeptFiles::Return(const std::string& name) {
  if (IsTooOld(PathOf(name))) return Drop(name);
  const auto& ingestPath = parts_.values.ingestPath;
  const auto freeName = FirstFreeName(name, [&](const std::string& candidate) {
    return parts_.files.Exists(ingestPath + candidate);
  });
  parts_.copy.MoveFile(PathOf(name), ingestPath + freeName);
}

void KeptFiles::Drop(const std::string& name) {
  auto arrival = parts_.history.Receive(PathOf(name), name);
  parts_.files.Delete(PathOf(name));
  parts_.history.End(std::move(arrival), Fate::kPurged);
}

bool KeptFiles::IsTooOld(const std::string& path) {
  const auto age = parts_.values.purgeAge;
  return age > milliseconds(0) && parts_.clock.UtcNow() - parts_.files.Status(path).written > age;
}

std::string KeptFiles::PathOf(const std::string& name) const {
  return JoinPath(parts_.values.KeptFolder(), name);
}

}  // namespace ostrel
