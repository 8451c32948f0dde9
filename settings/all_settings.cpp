#include "settings/all_settings.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/failure.h"
#include "base/text.h"
#include "settings/window_placement.h"

namespace ostrel {

AllSettings::AllSettings(const std::string& programFolder) {
  values_.programFolder = programFolder;
  rows_ = StationSettings(setup_, values_);
  const auto screen = ScreenSettings();
  rows_.insert(rows_.end(), screen.begin(), screen.end());
}

const SettingRow& AllSettings::RowOf(const std::string& key) const {
  const auto row = std::find_if(begin(), end(), [&](const SettingRow& candidate) {
    return ToUpper(candidate.key) == ToUpper(key);
  });
  if (row == end())
    throw Failure(failure_number::kInvalidArgument,
                  fmt::format("There is no setting {}. \"list\" shows them all.", key));
  return *row;
}

void AllSettings::Check(const StoredValue& value) const {
  if (value.isRaw) return;
  for (const auto& row : rows_) {
    if (ToUpper(KeyPath(row.section)) == ToUpper(value.keyPath) &&
        ToUpper(row.key) == ToUpper(value.name) && !row.isOfPort)
      CheckSetting(row, value.value);
  }
}

}  // namespace ostrel
