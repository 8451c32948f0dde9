// Moves the settings between the store and the setup dialog's fields: once in at start-up, and back
// out whenever the operator leaves the dialog.
#pragma once

#include <string>
#include <vector>

#include "engine/output_channels.h"
#include "ident/morse_identification.h"
#include "ident/schedule.h"
#include "intake/compression.h"
#include "intake/routing_rules.h"
#include "platform/dialogs.h"
#include "platform/settings_store.h"
#include "state/engine.h"
#include "state/setup.h"

namespace ostrel {

/// What the setup dialog does after a save.
enum class SaveOutcome {
  kHide,
  kStay,          // something was not saved; a message has named it
  kFocusLogSize,  // refused: `txtLogSize` is no number
};

class SettingsIo {
 public:
  struct Parts {
    SettingsStores& stores;
    Dialogs& dialogs;
    Setup& setup;
    ProgramValues& values;
    RoutingRules& rules;
    Schedule& schedule;
    Compression& compression;
    MorseIdentification& morse;
    OutputChannels& output;
  };
  explicit SettingsIo(const Parts& parts) : parts_(parts) {}

  /// Reads what start-up needs before there is a dialog. Throws Failure 13 for a text that does not
  /// convert, 57 when the store cannot be read.
  void LoadProgramValues();

  /// Fills every field, loads the rule lists and the schedule, opens the port. Throws Failure 57
  /// when the store cannot be read.
  void LoadSettings();

  /// Stores every field and the rule lists, and refreshes the program-wide values. Nothing is
  /// stored when the log size is no number. What could not be stored is named in a message; the
  /// rest is.
  SaveOutcome SaveSettings();

 private:
  void ShowProgramValues();
  void LoadFields();
  /// Appends the keys that could not be stored to `unsaved`.
  void StoreFields(std::vector<std::string>& unsaved);
  void TakeProgramValues();

  Parts parts_;
};

}  // namespace ostrel
