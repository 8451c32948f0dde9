#include <algorithm>
#include <fmt/format.h>
#include <vector>

#include "base/failure.h"
#include "base/text.h"
#include "programs/settings/commands.h"
#include "settings/settings_table.h"

namespace ostrel {

namespace {

/// The rows of the table over a state of their own: what is loaded into it concerns nobody.
class AllSettings {
 public:
  explicit AllSettings(const std::string& programFolder) {
    values_.programFolder = programFolder;
    rows_ = ScreenSettings();
    const auto station = StationSettings(setup_, values_);
    rows_.insert(rows_.begin(), station.begin(), station.end());
  }
  AllSettings(const AllSettings&) = delete;
  AllSettings& operator=(const AllSettings&) = delete;

  auto begin() const { return rows_.begin(); }
  auto end() const { return rows_.end(); }

  /// Throws Failure 5 when there is none.
  const SettingRow& RowOf(const std::string& key) const {
    const auto row = std::find_if(begin(), end(), [&](const SettingRow& candidate) {
      return ToUpper(candidate.key) == ToUpper(key);
    });
    if (row == end())
      throw Failure(failure_number::kInvalidArgument,
                    fmt::format("There is no setting {}. \"list\" shows them all.", key));
    return *row;
  }

 private:
  SetupFields setup_;
  ProgramValues values_;
  std::vector<SettingRow> rows_;
};

/// The values that would stop the next start-up are refused here.
void CheckValue(const SettingRow& row, const std::string& value) {
  try {
    row.load(value);
  } catch (const Failure&) {
    throw Failure(failure_number::kTypeMismatch,
                  fmt::format("{} cannot be \"{}\".", row.key, value));
  }
}

}  // namespace

void ListSettings(StationFolder& station) {
  const auto store = station.OpenStore();
  fmt::print("{:<17} {:<38} {}\n", "KEY", "SECTION", "VALUE");
  for (const auto& row : AllSettings(station.path())) {
    const auto value = store->ReadSetting(KeyPath(row.section), row.key, row.fallback);
    fmt::print("{:<17} {:<38} {}\n", row.key, KeyPath(row.section), value);
  }
}

void PrintSetting(StationFolder& station, const std::string& key) {
  const AllSettings settings(station.path());
  const auto& row = settings.RowOf(key);
  fmt::print("{}\n", station.OpenStore()->ReadSetting(KeyPath(row.section), row.key, row.fallback));
}

void StoreSetting(StationFolder& station, const std::string& key, const std::string& value) {
  const AllSettings settings(station.path());
  const auto& row = settings.RowOf(key);
  CheckValue(row, value);
  if (!station.OpenStore()->WriteSetting(KeyPath(row.section), row.key, value))
    throw Failure(failure_number::kDeviceError, row.key + " could not be stored.");
}

}  // namespace ostrel
