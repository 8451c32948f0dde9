// Every setting of the station, one row each: its key, its section, its default and the field that
// holds it. Load, save, the settings tool, the manual page and the tests all read this table.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "state/setup.h"

namespace ostrel {

enum class Section { kSettings, kScreen, kShared };

/// The key path of a section below the root.
std::string KeyPath(Section section);

/// The tree that an export saves: this program's sections and the family's.
inline constexpr const char* kFamilyTree = "Software\\Corvain";
inline constexpr const char* kRootName = "HKEY_LOCAL_MACHINE";

/// Where the live value of a row stands: a text field, a check box, or neither (a value that only
/// start-up reads, or the window's placement).
using SettingField = std::variant<std::monostate, Field<std::string>*, Field<Check>*>;

struct SettingRow {
  std::string key;
  Section section;
  std::string fallback;
  SettingField field;
};

/// The settings that the setup dialog's fields hold, in the order in which they are loaded.
std::vector<SettingRow> FieldSettings(Setup& setup, const std::string& programFolder);

/// The values that start-up reads before there is a dialog.
std::vector<SettingRow> StartupSettings(const std::string& programFolder);

/// The main window's placement; without a default, which is the window's own.
std::vector<SettingRow> ScreenSettings();

}  // namespace ostrel
