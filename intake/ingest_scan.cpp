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

}  // namespace

bool IsReceivedArchive(std::string_view name) {
  return MatchPattern(name, "*.ZI[S,P]*");
}

void IngestScan::CheckForNewFiles() {
  if (parts_.status.intakeIsPaused || !MayBeScanned()) return;
  std::string path = parts_.values.ingestPath;
  try {
    const auto name = parts_.files.FirstFile(parts_.values.ingestPath, {});
    if (!name) return parts_.kept.GiveOneBack();
    path += *name;
    TakeFile(*name);
  } catch (const std::exception& error) {
    OnFailure(AsFailure(error), path);
  }
}

/// Every file of the folder would be taken, and most deleted. A path is looked at when it is new.
bool IngestScan::MayBeScanned() {
  const auto& path = parts_.values.ingestPath;
  if (checkedPath_ != path) {
    checkedPath_ = path;
    mayBeScanned_ = RunStep(parts_.reporting, kProcedure, [&] {
      CheckIngestFolder(parts_.files.RealPath(path), parts_.values.programFolder);
    });
  }
  return mayBeScanned_;
}

void IngestScan::TakeFile(const std::string& listedName) {
  const auto path = parts_.values.ingestPath + listedName;
  // Lasts until the file is deleted: who writes the next version under its name waits for that.
  const auto hold = parts_.files.HoldAlone(path);
  lockedFileCount_ = 0;
  if (placed_.Contains(path)) return DeleteTaken(*hold, path);
  parts_.status.lastArrival = parts_.clock.Monotonic();

  const auto name = ToUpper(listedName);
  auto arrival = parts_.history.Receive(path, name);
  if (parts_.values.unZipFiles && IsReceivedArchive(name)) {
    Unpack(path);
    parts_.history.End(std::move(arrival), Fate::kUnpacked);
  } else if (parts_.rules.DiscardedBy(name)) {
    parts_.status.Count(&Counts::discarded);
    parts_.history.End(std::move(arrival), Fate::kDiscarded);
  } else {
    Route(std::move(arrival), path, name);
  }
  DeleteTaken(*hold, path);
}

void IngestScan::Route(ProductHistory::Arrival arrival, const std::string& path,
                       const std::string& name) {
  MakeCopies(path, name);
  if (const auto target = parts_.rules.TargetOf(name)) {
    const auto placed = PlaceInFolder(target->folder(), path, name);
    return parts_.history.Place(std::move(arrival), target->folder(), placed);
  }
  parts_.status.Count(&Counts::unmatched);
  if (parts_.kept.Keep(path, name) == KeptFiles::Outcome::kUnwanted)
    parts_.history.End(std::move(arrival), Fate::kNoRule);
}

/// What was taken and cannot be deleted counts as in use, and would lie there in silence.
void IngestScan::DeleteTaken(FileHold& hold, const std::string& path) {
  const bool isKnown = placed_.Contains(path);
  try {
    if (placed_.Delete(path, hold)) return;
  } catch (const Failure& failure) {
    if (!isKnown) {
      parts_.reporting.WriteLog(
          kCategory, fmt::format("{} was taken, will not be taken again, and cannot be deleted: {}",
                                 FileNameOf(path), failure.text()));
    }
    throw;
  }
  throw Failure(failure_number::kPermissionDenied, "In use: " + path);
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

void IngestScan::MakeCopies(const std::string& path, const std::string& name) {
  for (const auto& entry : parts_.rules.CopiesOf(name)) {
    for (int j = 1; j < std::min(entry.count, kMostCopies); ++j) {
      const auto copy = fmt::format("{}.{}", name, j);
      if (copy.size() > kLongestName) {
        parts_.reporting.WriteLog(kCategory,
                                  fmt::format("Copies left out, no name is so long: {}", copy));
        break;
      }
      parts_.copy.CopyFile(path, parts_.values.ingestPath + copy);
    }
  }
}

std::string IngestScan::PlaceInFolder(int folder, const std::string& path,
                                      const std::string& name) {
  const auto destination = parts_.values.HoldingFolder(folder);
  const auto freeName = FirstFreeName(name, [&](const std::string& candidate) {
    return parts_.files.Exists(JoinPath(destination, candidate));
  });
  if (!freeName.starts_with(StripDupSuffix(name)))
    parts_.reporting.WriteLog(kCategory, fmt::format("{} is taken, cut to {}", name, freeName));
  auto placed = JoinPath(destination, freeName);
  try {
    parts_.copy.CopyFile(path, placed);
  } catch (const Failure&) {
    RestoreFolder(parts_.files, parts_.reporting, destination);
    throw;
  }
  parts_.files.Secure(placed, path);
  return placed;
}

void IngestScan::OnFailure(const Failure& failure, const std::string& path) {
  ++lockedFileCount_;
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
