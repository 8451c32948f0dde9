// Files that are sent at fixed times of day. An entry names a time, a source and a destination;
// normally the destination lies in a holding folder, from where the copy goes the way of any
// received file. An entry whose minute is missed waits for the next day.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/reporting.h"
#include "base/time.h"
#include "intake/file_copy.h"
#include "platform/clock.h"
#include "platform/dialogs.h"
#include "platform/files.h"
#include "state/setup_fields.h"
#include "state/transmit_status.h"

namespace ostrel {

/// One entry taken apart: "hh:mm source destination".
struct ScheduleEntry {
  std::optional<TimeOfDay> time;  // nothing when the first five characters are no time
  std::string source;             // cannot hold a blank; empty when the rest has none
  std::string destination;
};
ScheduleEntry ParseScheduleEntry(std::string_view line);
/// True for a line that the operator can enter: it begins with a time and a blank.
bool IsScheduleEntry(std::string_view line);

class Schedule {
 public:
  struct Parts {
    Files& files;
    Clock& clock;
    FileCopy& copy;
    Dialogs& dialogs;
    Reporting& reporting;
    SetupFields& setup;
    TransmitStatus& status;
    const std::string& programFolder;
  };
  explicit Schedule(const Parts& parts) : parts_(parts) {}

  /// Once a minute: copies the file of every entry whose minute it is. Failures go to the log. The
  /// copy of a large file is made beside the ticks; its entry waits for it.
  void ProcessSchedule();
  /// Each tick: the entries whose copies have been made.
  void ProcessWaiting();

  /// RtSched.txt in the program folder. A file that is missing or cannot be read is an empty
  /// schedule, and the status tells of the second; one that could not be read is not written over
  /// until the operator edits the list.
  void LoadSchedule();

  /// Enter in `txtSchedule`. Returns false when the entry was refused with a message.
  bool AddEntry();
  /// Removes the entries at the selected positions.
  void RemoveEntries(const std::vector<std::size_t>& selected);
  /// Says in a message how an entry is written.
  void ShowHelp();

 private:
  void SaveSchedule();
  /// False while the copy of a large file is being made.
  bool Fire(const ScheduleEntry& entry);
  void LogFailure(const Failure& failure, const ScheduleEntry& entry);
  std::string Path() const;

  Parts parts_;
  std::vector<ScheduleEntry> waiting_;
};

}  // namespace ostrel
