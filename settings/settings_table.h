// Every setting of the station, one row each: its key, its section, its default and the field that
// holds it. Loading, saving and the settings tool go by this table.
#pragma once

#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "platform/settings_store.h"
#include "state/setup.h"

namespace ostrel {

enum class Section { kSettings, kScreen, kShared };

/// The key path of a section below the root.
std::string KeyPath(Section section);

/// Opens a store at the root under which the sections lie. Throws Failure 57.
std::unique_ptr<SettingsStore> OpenAtRoot(SettingsStores& stores);

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
