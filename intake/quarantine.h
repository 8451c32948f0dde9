// What was put out of the way because it held others up or could not be sent: files in
// KvData/RtQuarantine, each with its reason, until somebody restores or deletes it. Nothing purges
// them. A file is only renamed: it need not be readable, and a full disk is no hindrance. Where it
// lies on another file system, it goes to the hidden folder .RtQuarantine beside it.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/names.h"
#include "base/priority.h"
#include "base/reporting.h"
#include "intake/file_copy.h"
#include "intake/handed_back_files.h"
#include "intake/product_history.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "state/program_values.h"

namespace ostrel {

class Quarantine {
 public:
  struct Parts {
    Files& files;
    Clock& clock;
    FileCopy& copy;
    HandedBackFiles& handedBack;
    ProductHistory& history;
    Reporting& reporting;
    const ProgramValues& values;
  };
  explicit Quarantine(const Parts& parts) : parts_(parts) {}

  struct Item {
    std::string path;              // here
    std::string origin;            // the path that it had; empty when that is not known any more
    std::optional<Priority> p;     // it goes back through the intake of that one
    std::string reason;            // empty when it is not known any more
    std::optional<UtcTime> since;  // likewise

    std::string name() const { return std::string(FileNameOf(path)); }
  };

  /// The file at `path` goes to the quarantine under `name` or the next free one. Its product ends
  /// "set aside": the one whose place the history knows as `path`, else one that it did not know.
  /// With a priority it is restored to that one's holding folder, without one to where it was.
  /// Returns its path there. Throws Failure, and it stays where it is then.
  std::string Take(const std::string& path, std::optional<Priority> p, const std::string& name,
                   const std::string& reason);
  /// The same for the record of an entry that has left its queue, whose product its queue ends.
  void TakeEntry(const std::string& record, Priority p, const std::string& name,
                 const std::string& reason) {
    Move(record, p, name, reason);
  }
  /// Where its files lie.
  std::set<std::string> Folders();
  /// By name. Throws Failure when a folder of it cannot be listed.
  std::vector<Item> List();
  /// By name, in any case. Throws Failure.
  std::optional<Item> Find(const std::string& name);
  /// Returns where it lies now. Throws Failure, and it stays here then.
  std::string Restore(const Item& item);
  /// Throws Failure.
  void Delete(const Item& item);

 private:
  using Notes = std::map<std::string, Item>;  // by path

  std::string Move(const std::string& path, std::optional<Priority> p, const std::string& name,
                   const std::string& reason);
  std::string MoveTo(const std::string& folder, Item item, const std::string& name);
  /// What is known of the files, an earlier run included.
  Notes& KnownNotes();
  void ReadNotes();
  void Write(const Item& item);
  std::string NotesPath() const;
  std::string LineOf(const Item& item) const;
  std::optional<Item> ItemIn(std::string_view line) const;

  Parts parts_;
  std::optional<Notes> notes_;
};

}  // namespace ostrel
