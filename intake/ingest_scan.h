// The scan of the ingest folder: takes the first file of its listing once nobody holds it open, and
// moves it where the rules send it. One file a call. While a large file is brought to its next
// place beside the station, the scan passes over it.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "base/reporting.h"
#include "intake/file_copy.h"
#include "intake/kept_files.h"
#include "intake/obstacles.h"
#include "intake/placed_files.h"
#include "intake/product_history.h"
#include "intake/rule_matcher.h"
#include "platform/archives.h"
#include "platform/clock.h"
#include "state/program_values.h"
#include "state/transmit_status.h"

namespace ostrel {

/// True for a name, in upper case, that is unpacked when unzipping is on.
bool IsReceivedArchive(std::string_view name);

class IngestScan {
 public:
  struct Parts {
    Files& files;
    Archives& archives;
    const Clock& clock;
    FileCopy& copy;
    const RuleMatcher& rules;
    KeptFiles& kept;
    Obstacles& obstacles;
    ProductHistory& history;
    Reporting& reporting;
    TransmitStatus& status;
    const ProgramValues& values;
  };
  explicit IngestScan(const Parts& parts) : parts_(parts), placed_(parts.files) {}

  /// One step. A failure leaves the file where it is; the next call takes it again. A folder whose
  /// files are no received ones is reported, once, and left alone.
  void CheckForNewFiles();

 private:
  /// A large file whose copies or next place are being made beside the station.
  struct Underway {
    std::string folder;
    Means means = Means::kPlace;
  };
  /// What was made of a received file before a later step of it failed, or has to wait.
  struct Copies {
    FileStatus of;
    int made = 0;
  };
  bool MayBeScanned();
  bool IsUnderway(const std::string& listedName);
  void TakeFile(const std::string& listedName);
  void Unpack(const std::string& path);
  bool IsPrepared(const std::string& listedName, const std::string& name,
                  const std::optional<Target>& target);
  bool IsReady(const std::string& listedName, const std::string& folder, Means means);
  bool MakeCopies(const std::string& listedName, const std::string& name);
  Copies& CopiesOf(const std::string& listedName);
  std::string Route(const std::string& path, const std::string& name,
                    const std::optional<Target>& target);
  std::string PlaceInFolder(const std::string& folder, const std::string& path,
                            const std::string& name);
  void DeleteTaken(FileHold& hold, const std::string& path, const std::string& placed);
  void Detach(const std::string& placed, const std::string& path);
  void OnFailure(const Failure& failure, const std::string& path);

  Parts parts_;
  PlacedFiles placed_;
  std::map<std::string, int> archiveDepths_;  // of archives that came out of others, by path
  std::map<std::string, Underway> large_;     // by name as listed
  std::map<std::string, Copies> copies_;      // likewise
  int lockedFileCount_ = 0;
  std::string checkedPath_;         // the ingest path that was looked at last
  std::optional<Failure> refusal_;  // of that path
};

}  // namespace ostrel
