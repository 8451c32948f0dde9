#include "programs/settings/station_folder.h"

#include "base/failure.h"
#include "station/program_log.h"

namespace ostrel {

StationFolder::StationFolder(const std::string& folder)
    : path_(folder), stores_(folder + "/KvRegistry.db") {
  if (!files_.Exists(path_))
    throw Failure(failure_number::kPathNotFound, "There is no folder " + path_);
}

void StationFolder::WriteLog(std::string_view category, std::string_view message) {
  files_.Append(LogPath(path_), LogLine(clock_.Now(), category, message));
}

}  // namespace ostrel
