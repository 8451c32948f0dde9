#include "programs/settings/station_folder.h"

#include "base/failure.h"
#include "base/station_files.h"
#include "base/text.h"
#include "settings/lost_settings.h"
#include "station/program_log.h"

namespace ostrel {

namespace {

Failure Lost(const std::string& loss) {
  return Failure(
      failure_number::kDeviceError,
      fmt::format("{} The next start takes its copy, if there is a good one. {}", loss, kWayOut));
}

}  // namespace

StationFolder::StationFolder(const std::string& folder)
    : path_(folder), stores_(JoinPath(folder, kSettingsFile)) {
  if (!files_.Exists(path_))
    throw Failure(failure_number::kPathNotFound, "There is no folder " + path_);
}

std::unique_ptr<SettingsStore> StationFolder::OpenStore() {
  const auto loss = LossOf(stores_, files_, path_);
  if (!loss.empty() && stores_.Look().state == StoreState::kDamaged) throw Lost(loss);
  if (!loss.empty()) fmt::print(stderr, "Note: {} These are the defaults.\n", Printable(loss));
  return OpenAtRoot(stores_);
}

void StationFolder::ChangeStore(const std::function<void(SettingsStore&)>& change) {
  const auto loss = LossOf(stores_, files_, path_);
  if (!loss.empty()) throw Lost(loss);
  change(*OpenAtRoot(stores_));
  KeepCopy();
}

void StationFolder::KeepCopy() {
  if (const auto failure = FailureIn([this] { stores_.KeepCopy(); }))
    fmt::print(stderr, "No copy of the settings store was made: {}\n", Printable(failure->text()));
}

void StationFolder::Log(const std::string& text) {
  try {
    files_.Append(LogPath(path_), LogLine(clock_.Now(), "Settings", text));
  } catch (const Failure& failure) {
    fmt::print(stderr, "The log could not be written: {}\n", Printable(failure.text()));
  }
}

}  // namespace ostrel
