// Every setting of the station, one row each: its key, its section, its default, and how its text
// is taken and stored. Start-up, the setup dialog's load and save and the settings tool go by this
// table.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/settings_store.h"
#include "state/program_values.h"
#include "state/setup_fields.h"

namespace ostrel {

enum class Section { kSettings, kScreen, kShared };

/// The key path of a section below the root.
std::string KeyPath(Section section);

/// Opens a store at the root under which the sections lie. Throws Failure 57.
std::unique_ptr<SettingsStore> OpenAtRoot(SettingsStores& stores);

/// The tree that an export saves: this program's sections and the family's.
inline constexpr const char* kFamilyTree = "Software\\Corvain";
inline constexpr const char* kRootName = "HKEY_LOCAL_MACHINE";

/// Who reads a setting, and when.
enum class Reader {
  kStart,   // start-up, before there are fields; the log's settings among them
  kFields,  // what fills the setup dialog's fields
};

/// Both included.
struct NumberRange {
  int least, most;
};

struct SettingRow {
  std::string key;
  std::string meaning;  // in a line, for whoever reads the settings as a text
  Section section;
  std::string fallback;
  Reader reader;
  /// Takes a stored text. Throws Failure 13 or 6 for one that does not convert, and takes nothing
  /// then; a field takes any text.
  std::function<void(const std::string& text)> load;
  /// The text to store; none for a setting that the setup dialog leaves as it is.
  std::function<std::string()> store;
  /// Refuses what `load` takes and who uses the setting does not. Throws Failure; none when nobody
  /// does.
  std::function<void(const std::string& text)> check = {};
  /// What makes sense and the setup dialog can show; none when any text does. A store may hold
  /// others, and the station lives with them.
  std::optional<NumberRange> range = {};
  bool isOfPort =
      false;  // what another machine had may be no port here, and costs the rest nothing
};

/// Throws Failure 13 for a text that the station could not use, naming key, text and reason. The
/// row takes the text on the way: it must be one over a state that concerns nobody.
void CheckSetting(const SettingRow& row, const std::string& text);
/// What is strange about a text that the station takes; empty when nothing is.
std::string DoubtAbout(const SettingRow& row, const std::string& text);

/// The settings of the station, in the order in which they are stored. The rows refer to both
/// arguments.
std::vector<SettingRow> StationSettings(SetupFields& setup, ProgramValues& values);

}  // namespace ostrel
