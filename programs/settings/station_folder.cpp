#include "programs/settings/station_folder.h"

#include "base/failure.h"
#include "station/program_log.h"

namespace ostrel {

StationFolder::StationFolder(const std::string& folder)
    : path_(folder), stores_(folder + "/KvRegistry.db") {
  if (!files_.Exists(path_))
    throw Failure(failure_number::kPathNotFound, "There is no folder " + path_);
}

void StationFolder::Log(const std::string& text) {
  try {
    files_.Append(LogPath(path_), LogLine(clock_.Now(), "Settings", text));
  } catch (const Failure& failure) {
    fmt::print(stderr, "The log could not be written: {}\n", failure.text());
  }
}

}  // namespace ostrel
