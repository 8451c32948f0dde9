// Every setting of a station that only exists on disk.
#pragma once

#include <string>
#include <vector>

#include "settings/settings_table.h"

namespace ostrel {

/// The rows of the table over a state of their own: what is loaded into it concerns nobody.
class AllSettings {
 public:
  explicit AllSettings(const std::string& programFolder);
  AllSettings(const AllSettings&) = delete;
  AllSettings& operator=(const AllSettings&) = delete;

  auto begin() const { return rows_.begin(); }
  auto end() const { return rows_.end(); }

  /// Throws Failure 5 when there is none.
  const SettingRow& RowOf(const std::string& key) const;
  /// Throws Failure 13 for a value with which the station could not start. What is no setting of
  /// the station, or no text, may be anything: the station does not read it.
  void Check(const StoredValue& value) const;

 private:
  SetupFields setup_;
  ProgramValues values_;
  std::vector<SettingRow> rows_;
};

}  // namespace ostrel
