// A copy of a station's rules, schedule and settings in a folder of its own, with every path of the
// station turned to the copy: what a simulation does there never touches the station.
#pragma once

#include <string>
#include <vector>

#include "platform/linux/temporary_folder.h"

namespace ostrel {

class StationCopy {
 public:
  /// Copies the station in `folder`. Throws Failure 76 when there is none.
  explicit StationCopy(const std::string& folder);

  const std::string& path() const { return folder_.path(); }
  std::string IngestFolder() const { return folder_ / "KvData/RxFiles"; }
  std::string StorePath() const { return folder_ / "KvRegistry.db"; }
  /// Stores a value of the station's own section.
  void Set(const std::string& key, const std::string& value);
  /// What of the station the copy does without, a line each.
  const std::vector<std::string>& remarks() const { return remarks_; }

 private:
  void CopyFiles(const std::string& folder);
  void CopySchedule(const std::string& folder);
  void CopySettings(const std::string& folder);

  TemporaryFolder folder_;
  std::vector<std::string> remarks_;
};

}  // namespace ostrel
