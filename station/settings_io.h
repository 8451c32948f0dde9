// Moves the settings between the store and the setup dialog's fields: once in at start-up, and back
// out whenever the operator leaves the dialog.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/reporting.h"
#include "ident/morse_identification.h"
#include "ident/schedule.h"
#include "intake/compression.h"
#include "intake/kept_files.h"
#include "intake/rule_lists.h"
#include "platform/dialogs.h"
#include "platform/settings_store.h"
#include "radio/transmitter.h"
#include "state/program_values.h"
#include "state/setup_fields.h"
#include "station/save_outcome.h"
#include "station/settings_care.h"

namespace ostrel {

class SettingsIo {
 public:
  struct Parts {
    SettingsStores& stores;
    SettingsCare& care;
    Dialogs& dialogs;
    SetupFields& setup;
    ProgramValues& values;
    RuleLists& rules;
    Schedule& schedule;
    Compression& compression;
    MorseIdentification& morse;
    Transmitter& transmitter;
    KeptFiles& kept;
    Reporting& reporting;
  };
  explicit SettingsIo(const Parts& parts) : parts_(parts) {}

  /// Reads what start-up needs before there is a dialog, and what governs the log. Throws Failure
  /// 13 or 6 for the first text that does not convert, once all are read, 57 when the store cannot
  /// be read.
  void LoadProgramValues();

  /// Fills every field, loads the rule lists and the schedule, opens the port. Throws Failure 57
  /// when the store cannot be read.
  void LoadSettings();

  /// Shows the dialog. What start-up did not come to load, or could not, is loaded first, the port
  /// not opened; a message names what cannot be, once. A start-up value that does not convert shows
  /// its default then.
  void OpenSetup();

  /// Stores every field and the rule lists, refreshes the program-wide values, and hides the
  /// dialog. Refused when the log size is no number. Nothing is stored that was not loaded. What
  /// cannot be stored stays in force and is kept to be tried again; a message names it when there
  /// are new edits since the last try.
  SaveOutcome SaveSettings();

  /// Tries once more what the last save could not store. Returns what to tell the operator, which
  /// is in the log then; empty when nothing is left unsaved.
  std::string SaveUnsaved();

  /// True when the fields hold what the store held.
  bool IsLoaded() const { return isLoaded_; }

 private:
  struct Damaged {
    std::string key;
    Failure failure;
  };
  /// What the operator left the dialog with.
  struct Edits {
    RuleTexts rules;
    std::vector<StoredValue> values;
    bool areLoaded;  // the values were loaded before they were edited
    friend bool operator==(const Edits&, const Edits&) = default;
  };

  /// A text that does not convert is returned, and its default taken.
  std::vector<Damaged> ReadProgramValues(SettingsStore& store);
  /// Returns a name and a reason for each thing that could not be loaded.
  std::vector<std::string> LoadWhatIsMissing();
  void ShowProgramValues();
  void LoadFields();
  void TakeProgramValues();
  Edits Edited();
  void Say(const std::string& text);

  Parts parts_;
  bool isLoaded_ = false;
  std::optional<Edits> unsaved_;
  std::vector<std::string> toldUnread_;
};

}  // namespace ostrel
