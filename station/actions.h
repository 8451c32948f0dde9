// Everything that an operator can ask of the station through its windows: the menus, the Delete
// key, the entry fields, the value labels that a click steps, and the leaving of the setup dialog.
// The windows forward their events here and decide nothing.
#pragma once

#include <cstddef>
#include <vector>

#include "base/priority.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "state/program_values.h"
#include "state/setup_fields.h"
#include "state/transmit_status.h"
#include "station/activity.h"
#include "station/save_outcome.h"

namespace ostrel {

class IngestPrograms;
class MorseIdentification;
class RuleLists;
class Schedule;
class SettingsCare;
class SettingsIo;
class SettingsTransfer;
class TransmitQueue;
class Transmitter;

/// Which mouse button stepped a value label.
enum class Button { kLeft, kOther };

/// What the window that asked has to do afterwards.
enum class AfterEntry { kNothing, kFocusEntryField };

class Actions {
 public:
  struct Parts {
    Dialogs& dialogs;
    Desktop& desktop;
    SettingsCare& care;
    Activity& activity;
    SetupFields& setup;
    TransmitStatus& status;
    ProgramValues& values;
    MorseIdentification& morse;
    Schedule& schedule;
    RuleLists& rules;
    TransmitQueue& queue;
    Transmitter& transmitter;
    SettingsIo& settings;
    SettingsTransfer& transfer;
    IngestPrograms& ingest;
  };
  explicit Actions(const Parts& parts) : parts_(parts) {}

  // Main window
  void ShowSetup();
  void SendMorseId();
  void ViewLogfile();
  void ShowIngest();
  void ExportSettings();
  void ImportSettings();
  /// Unloads the setup dialog, then ends the program.
  void Exit();
  /// The main window's close box: ends the program.
  void Close();
  void OpenWebSite();
  void MailSupport();
  void ToggleTimingReadout();
  /// The Delete key in a queue list. The entry on the air stays; the view drops its selection.
  void RemoveQueued(Priority p, const std::vector<std::size_t>& selected);

  // Rule lists, by their index 0 to 12
  /// Enter in the entry field of a list: what stands in `pri1inbox`, checked and added.
  void AddKeyword(std::size_t list);
  void RemoveKeywords(std::size_t list, const std::vector<std::size_t>& selected);

  // Schedule
  /// Enter in `txtSchedule`. The entry field gets the focus back when the entry was refused.
  AfterEntry AddScheduleEntry();
  void RemoveScheduleEntries(const std::vector<std::size_t>& selected);
  /// A click on an entry puts its text into the entry field.
  void EditScheduleEntry(std::size_t position);
  void ShowScheduleHelp();

  // Value labels; the port values reopen the port at each step
  void StepPort(Button button);
  void StepBaud();
  void StepStopBits();
  void StepCopies(Button button);
  void StepCompFiles(Button button);
  void StepBlockPriority();

  // The ingest program's two check boxes exclude each other; called after a click on one
  void BraskClicked();
  void ByteBlasterClicked();

  /// A click on "Show Errors" in the error window: in force at once and stored by itself, where the
  /// setup dialog's is stored with everything else.
  void ShowErrorsClicked();

  /// The setup dialog lost activation to another window of the program (or is being closed).
  /// Stores everything and hides the dialog, or refuses and names the field to be put right.
  SaveOutcome LeaveSetup();

 private:
  void ReopenPort();

  Parts parts_;
};

}  // namespace ostrel
