#include "intake/ingest_scan.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/names.h"
#include "base/text.h"
#include "intake/match_pattern.h"

namespace ostrel {

namespace {

constexpr const char* kProcedure = "CheckForNewFiles";
constexpr int kScansBeforeLockIsReported = 40;
constexpr int kMostCopies = 99;  // a mistyped count in a list file must not fill the disk

}  // namespace

bool IsReceivedArchive(std::string_view name) {
  return MatchPattern(name, "*.ZI[S,P]*");
}

void IngestScan::CheckForNewFiles() {
  std::string path = parts_.values.ingestPath;
  try {
    const auto name = parts_.files.FirstFile(parts_.values.ingestPath);
    if (!name) return;
    path += *name;
    TakeFile(*name);
  } catch (const std::exception& error) {
    OnFailure(AsFailure(error), path);
  }
}

void IngestScan::TakeFile(const std::string& listedName) {
  const auto path = parts_.values.ingestPath + listedName;
  parts_.files.TestExclusive(path);
  lockedFileCount_ = 0;
  if (placed_.Contains(path)) return placed_.Delete(path);

  const auto name = ToUpper(listedName);
  if (parts_.values.unZipFiles && IsReceivedArchive(name)) return Unpack(path);
  if (parts_.rules.DiscardedBy(name)) return parts_.files.Delete(path);
  MakeCopies(path, name);
  const auto target = parts_.rules.TargetOf(name);
  if (!target) return parts_.files.Delete(path);
  PlaceInFolder(target->folder(), path, name);
  placed_.Delete(path);
}

void IngestScan::Unpack(const std::string& path) {
  const auto result = parts_.archives.Extract(path, parts_.values.ingestPath, ExtractLimits{});
  if (result.opened && !result.remark.empty())
    parts_.reporting.WriteLog("UnZip", fmt::format("{}: {}", FileNameOf(path), result.remark));
  placed_.Delete(path);
}

void IngestScan::MakeCopies(const std::string& path, const std::string& name) {
  for (const auto& entry : parts_.rules.CopiesOf(name)) {
    for (int j = 1; j < std::min(entry.count, kMostCopies); ++j)
      parts_.copy.CopyFile(path, fmt::format("{}{}.{}", parts_.values.ingestPath, name, j));
  }
}

void IngestScan::PlaceInFolder(int folder, const std::string& path, const std::string& name) {
  const auto destination = parts_.values.HoldingFolder(folder);
  const auto freeName = FirstFreeName(name, [&](const std::string& candidate) {
    return parts_.files.Exists(JoinPath(destination, candidate));
  });
  parts_.copy.CopyFile(path, JoinPath(destination, freeName));
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
