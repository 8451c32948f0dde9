#include <algorithm>
#include <cstdint>
#include <fmt/format.h>

#include "base/failure.h"
#include "base/numbers.h"
#include "base/text.h"
#include "programs/settings/commands.h"
#include "settings/settings_table.h"

namespace ostrel {

namespace {

std::vector<SettingRow> AllSettings(Setup& setup, const std::string& programFolder) {
  auto rows = StartupSettings(programFolder);
  for (auto& row : FieldSettings(setup, programFolder)) rows.push_back(std::move(row));
  for (auto& row : ScreenSettings()) rows.push_back(std::move(row));
  return rows;
}

SettingRow RowOf(const std::string& key, const std::string& programFolder) {
  Setup setup;
  const auto rows = AllSettings(setup, programFolder);
  const auto row = std::find_if(rows.begin(), rows.end(), [&](const SettingRow& candidate) {
    return ToUpper(candidate.key) == ToUpper(key);
  });
  if (row == rows.end())
    throw Failure(failure_number::kInvalidArgument,
                  fmt::format("There is no setting {}. \"list\" shows them all.", key));
  return *row;
}

void CheckRange(const std::string& value, int first, int last) {
  const auto number = StrictInteger(value);
  if (number < first || number > last) throw Failure(failure_number::kOverflow, "Overflow");
}

/// The values that would stop the next start-up are refused here.
void CheckValue(const SettingRow& row, const std::string& value) {
  try {
    if (row.key == "Engine") CheckRange(value, INT16_MIN, INT16_MAX);
    if (row.key == "MainState") CheckRange(value, 0, 2);
    if (row.key == "UdpPort") StrictInteger(value);
    if (row.key == "UnZipFiles" || row.key == "PacketHost") StrictBoolean(value);
    if (row.section == Section::kScreen) StrictNumber(value);
  } catch (const Failure&) {
    throw Failure(failure_number::kTypeMismatch,
                  fmt::format("{} cannot be \"{}\".", row.key, value));
  }
}

}  // namespace

void ListSettings(StationFolder& station) {
  const auto store = station.OpenStore();
  Setup setup;
  fmt::print("{:<17} {:<38} {}\n", "KEY", "SECTION", "VALUE");
  for (const auto& row : AllSettings(setup, station.path())) {
    const auto value = store->ReadSetting(KeyPath(row.section), row.key, row.fallback);
    fmt::print("{:<17} {:<38} {}\n", row.key, KeyPath(row.section), value);
  }
}

void PrintSetting(StationFolder& station, const std::string& key) {
  const auto row = RowOf(key, station.path());
  fmt::print("{}\n", station.OpenStore()->ReadSetting(KeyPath(row.section), row.key, row.fallback));
}

void StoreSetting(StationFolder& station, const std::string& key, const std::string& value) {
  const auto row = RowOf(key, station.path());
  CheckValue(row, value);
  if (!station.OpenStore()->WriteSetting(KeyPath(row.section), row.key, value))
    throw Failure(failure_number::kDeviceError, row.key + " could not be stored.");
}

}  // namespace ostrel
