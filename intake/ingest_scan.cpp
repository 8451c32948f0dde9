#include "intake/ingest_scan.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/names.h"
#include "base/text.h"
#include "intake/match_pattern.h"
#include "intake/missing_folder.h"
#include "state/ingest_folder.h"

namespace ostrel {

namespace {

constexpr const char* kProcedure = "CheckForNewFiles";
constexpr const char* kCategory = "Ingest";
constexpr int kScansBeforeLockIsReported = 40;
constexpr int kDeepestArchive = 4;  // one that unpacks to itself must come to an end
constexpr int kMostCopies = 99;     // a mistyped count in a list file must not fill the disk

Failure InUse(const std::string& path) {
  return {failure_number::kPermissionDenied, "In use: " + path};
}

}  // namespace

bool IsReceivedArchive(std::string_view name) {
  return MatchPattern(name, "*.ZI[S,P]*");
}

void IngestScan::CheckForNewFiles() {
  if (parts_.status.intakeIsPaused || !MayBeScanned()) return;
  std::string path = parts_.values.ingestPath;
  try {
    const auto name = parts_.files.FirstFile(
        path, [this](const std::string& listed) { return !large_.empty() && IsUnderway(listed); });
    if (!name) {
      parts_.obstacles.Pass();
      return parts_.kept.GiveOneBack();
    }
    path += *name;
    TakeFile(*name);
    parts_.obstacles.Pass();
  } catch (const std::exception& error) {
    OnFailure(AsFailure(error), path);
  }
}

/// A large file that is being brought to its next place beside the station. What comes behind it
/// does not wait for that.
bool IngestScan::IsUnderway(const std::string& listedName) {
  const auto large = large_.find(listedName);
  if (large == large_.end()) return false;
  const auto path = parts_.values.ingestPath + listedName;
  return !parts_.files.IsReady(path, large->second.folder, large->second.means);
}

/// Every file of the folder would be taken, and most deleted. A path is looked at when it is new.
bool IngestScan::MayBeScanned() {
  const auto& path = parts_.values.ingestPath;
  if (checkedPath_ != path) {
    checkedPath_ = path;
    refusal_ = FailureIn(
        [&] { CheckIngestFolder(parts_.files.RealPath(path), parts_.values.programFolder); });
    if (refusal_) parts_.reporting.ReportError(*refusal_, kProcedure);
  }
  if (refusal_) parts_.obstacles.Block(path, refusal_->text());
  return !refusal_;
}

void IngestScan::TakeFile(const std::string& listedName) {
  const auto path = parts_.values.ingestPath + listedName;
  // Lasts until the file is deleted: who writes the next version under its name waits for that.
  const auto hold = parts_.files.HoldAlone(path, WhenUnknown::kWait);
  lockedFileCount_ = 0;
  if (placed_.Contains(path)) return DeleteTaken(*hold, path, {});
  parts_.status.lastArrival = parts_.clock.Monotonic();

  const auto name = ToUpper(listedName);
  std::string placed;
  if (parts_.values.unZipFiles && IsReceivedArchive(name)) {
    auto arrival = parts_.history.Receive(path, name);
    Unpack(path);
    parts_.history.End(std::move(arrival), Fate::kUnpacked);
  } else if (parts_.rules.DiscardedBy(name)) {
    parts_.status.Count(&Counts::discarded);
    parts_.history.End(parts_.history.Receive(path, name), Fate::kDiscarded);
  } else {
    const auto target = parts_.rules.TargetOf(name);
    if (!IsPrepared(listedName, name, target)) return;
    placed = Route(path, name, target);
    large_.erase(listedName);
    copies_.erase(listedName);
  }
  ++parts_.status.arrivedSinceStart;
  DeleteTaken(*hold, path, placed);
}

/// False while a copy or the way to its next place is being made for a large file. One that is only
/// kept gets its copies when it comes back.
bool IngestScan::IsPrepared(const std::string& listedName, const std::string& name,
                            const std::optional<Target>& target) {
  const bool isKept = !target && parts_.kept.IsKeeping();
  if (!isKept && !MakeCopies(listedName, name)) return false;
  const auto folder =
      target ? parts_.values.HoldingFolder(target->folder()) : parts_.values.KeptFolder();
  return IsReady(listedName, folder, Means::kPlace);
}

/// Returns where the file lies now; nothing where it goes nowhere.
std::string IngestScan::Route(const std::string& path, const std::string& name,
                              const std::optional<Target>& target) {
  auto arrival = parts_.history.Receive(path, name);
  if (target) {
    auto placed = PlaceInFolder(parts_.values.HoldingFolder(target->folder()), path, name);
    parts_.history.Place(std::move(arrival), target->folder(), placed);
    return placed;
  }
  parts_.status.Count(&Counts::unmatched);
  auto placed = parts_.kept.Keep(path, name);
  if (placed.empty()) parts_.history.End(std::move(arrival), Fate::kNoRule);
  return placed;
}

/// False while the file has to wait for its means; the scan passes over it meanwhile.
bool IngestScan::IsReady(const std::string& listedName, const std::string& folder, Means means) {
  if (parts_.files.IsReady(parts_.values.ingestPath + listedName, folder, means)) return true;
  auto& large = large_[listedName];
  large.folder = folder;
  large.means = means;
  return false;
}

/// What was taken and cannot be deleted counts as in use, and would lie there in silence. What was
/// made of it, at `placed`, must not change with it.
void IngestScan::DeleteTaken(FileHold& hold, const std::string& path, const std::string& placed) {
  const bool isKnown = placed_.Contains(path);
  try {
    if (placed_.Delete(path, hold)) return;
  } catch (const Failure& failure) {
    if (!isKnown) {
      Detach(placed, path);
      parts_.reporting.WriteLog(
          kCategory, fmt::format("{} was taken, will not be taken again, and cannot be deleted: {}",
                                 FileNameOf(path), failure.text()));
    }
    throw;
  }
  Detach(placed, path);
  throw InUse(path);
}

/// Where there is no room for a file of its own, what was taken is given up for the received file,
/// which is taken again. Throws Failure then.
void IngestScan::Detach(const std::string& placed, const std::string& path) {
  if (placed.empty() || TryStep([&] { parts_.copy.Detach(placed); })) return;
  if (parts_.files.Exists(path))
    parts_.files.Delete(placed);
  else
    parts_.files.Rename(placed, path);
  placed_.Forget(path);
  parts_.history.EndAt(placed, Fate::kReplaced);
  throw InUse(path);
}

void IngestScan::Unpack(const std::string& path) {
  const auto found = archiveDepths_.find(path);
  const int depth = found != archiveDepths_.end() ? found->second : 1;
  ExtractResult result;
  if (depth <= kDeepestArchive) {
    result = parts_.archives.Extract(path, parts_.values.ingestPath, ExtractLimits{});
  } else {
    result = {.opened = true, .files = {}, .remark = "not unpacked, it lay too deep in archives"};
  }
  if (result.opened && !result.remark.empty())
    parts_.reporting.WriteLog("UnZip", fmt::format("{}: {}", FileNameOf(path), result.remark));
  archiveDepths_.erase(path);
  for (const auto& file : result.files) {
    if (IsReceivedArchive(ToUpper(FileNameOf(file)))) archiveDepths_[file] = depth + 1;
  }
}

/// False while the next copy of a large file is being made; those before it are not made again.
bool IngestScan::MakeCopies(const std::string& listedName, const std::string& name) {
  const auto entries = parts_.rules.CopiesOf(name);
  if (entries.empty()) return true;
  const auto& folder = parts_.values.ingestPath;
  auto& copies = CopiesOf(listedName);
  int number = 0;
  for (const auto& entry : entries) {
    for (int j = 1; j < std::min(entry.count, kMostCopies); ++j) {
      const auto copy = fmt::format("{}.{}", name, j);
      if (copy.size() > kLongestName) {
        parts_.reporting.WriteLog(kCategory,
                                  fmt::format("Copies left out, no name is so long: {}", copy));
        break;
      }
      if (++number <= copies.made) continue;
      if (!IsReady(listedName, std::string(FolderOf(folder)), Means::kCopy)) return false;
      parts_.copy.CopyFile(folder + listedName, folder + copy);
      copies.made = number;
    }
  }
  return true;
}

IngestScan::Copies& IngestScan::CopiesOf(const std::string& listedName) {
  const auto status = parts_.files.Status(parts_.values.ingestPath + listedName);
  auto& copies = copies_[listedName];
  if (copies.of != status) copies = {.of = status};
  return copies;
}

std::string IngestScan::PlaceInFolder(const std::string& folder, const std::string& path,
                                      const std::string& name) {
  const auto freeName = FirstFreeName(name, [&](const std::string& candidate) {
    return parts_.files.Exists(JoinPath(folder, candidate));
  });
  if (!freeName.starts_with(StripDupSuffix(name)))
    parts_.reporting.WriteLog(kCategory, fmt::format("{} is taken, cut to {}", name, freeName));
  auto placed = JoinPath(folder, freeName);
  try {
    parts_.copy.PlaceFile(path, placed);
  } catch (const Failure&) {
    RestoreFolder(parts_.files, parts_.reporting, folder);
    throw;
  }
  parts_.files.Secure(placed, path);
  return placed;
}

void IngestScan::OnFailure(const Failure& failure, const std::string& path) {
  ++lockedFileCount_;
  parts_.obstacles.Block(path, failure.text());
  if (!failure.IsInUse()) {
    parts_.reporting.ReportError(failure, kProcedure, " File Name: " + path);
  } else if (lockedFileCount_ > kScansBeforeLockIsReported) {
    lockedFileCount_ = 0;
    parts_.reporting.ReportError(
        failure, kProcedure,
        AdditionalText(std::vector<std::string>{
            "A file in the ingest directory is locked and cannot be processed. ",
            " File Name: " + path, "Correct this problem and restart Ostrel. "}));
  }
}

}  // namespace ostrel
