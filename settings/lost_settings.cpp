#include "settings/lost_settings.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/names.h"
#include "base/reporting.h"
#include "base/station_files.h"

namespace ostrel {

namespace {

/// One that cannot be read, or is too long to look through, is a station's: a tool writes few
/// lines. What is no file is no log.
bool TellsOfAStart(Files& files, const std::string& log) {
  std::string lines;
  const auto failure = FailureIn([&] { lines = files.ReadAll(log); });
  if (!failure) return lines.find(kStartText) != std::string::npos;
  return !failure->IsMissing() && failure->number() != failure_number::kPathAccess;
}

}  // namespace

bool HasBeenStation(Files& files, const std::string& programFolder) {
  const auto isTrace = [](const std::string& name) {
    return name == kHistoryFile || (name.starts_with(kBesideSettings) && name != kSettingsFile);
  };
  return std::ranges::any_of(files.ListFiles(programFolder), isTrace) ||
         TellsOfAStart(files, LogPath(programFolder)) ||
         TellsOfAStart(files, OldLogPath(programFolder));
}

std::string LossOf(SettingsStores& stores, Files& files, const std::string& programFolder) {
  const auto look = stores.Look();
  if (look.state == StoreState::kDamaged)
    return fmt::format("The settings store is damaged ({}).", look.why);
  const bool isLost = look.state == StoreState::kMissing && HasBeenStation(files, programFolder);
  return isLost ? "The settings store is missing." : "";
}

}  // namespace ostrel
