// What an earlier run of the station left in the record of its queues comes back to the holding
// folders at the start and goes through the intake again. There a further name, under
// KvData/.pending/back/<priority>/, tells it from files that are newly received, until the intake
// has taken it.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "base/priority.h"
#include "base/reporting.h"
#include "intake/entry_records.h"
#include "intake/product_history.h"
#include "platform/clock.h"
#include "state/setup_fields.h"

namespace ostrel {

class HandedBackFiles {
 public:
  struct Parts {
    Files& files;
    Clock& clock;
    FileCopy& copy;
    EntryRecords& records;
    ProductHistory& history;
    Reporting& reporting;
    const SetupFields& setup;
    const ProgramValues& values;
  };
  explicit HandedBackFiles(const Parts& parts) : parts_(parts) {}

  /// Tells a record of an entry that lives in this run.
  using IsLiving = std::function<bool(Priority p, const std::string& record)>;
  /// Before the first tick, and when the folder of the records came back: moves every recorded file
  /// back that no entry lives of. Of a product that is overwritten by
  /// newer files only the newest comes back; what is past the purge age does not. What cannot be
  /// moved is reported and waits for the next start. Throws Failure when the folders of the record
  /// cannot be made.
  void HandBack(const IsLiving& isLiving);

  /// A file that has been through the intake before, and lies at `path`, goes to the holding folder
  /// of `p` under `name` or the next free one. Returns its path there. Throws Failure, and it stays
  /// where it is then.
  std::string GiveBack(const std::string& path, Priority p, const std::string& name);

  /// True for a file of the holding folder that came back: it has been through the intake before,
  /// and all that came since is newer.
  bool Contains(Priority p, const std::string& name) const { return names_[p].contains(name); }
  /// True when one of these is another file of the product of that name.
  bool HoldsProduct(Priority p, const std::string& name) const;
  /// The intake has taken this file out of the holding folder.
  void Taken(Priority p, const std::string& name);

 private:
  /// A file that waits to come back, or came back already in an earlier start.
  struct Recorded {
    std::string name;
    UtcTime time;
    bool isBack;
  };
  void MakeFolders();
  void HandBack(Priority p, const IsLiving& isLiving);
  std::vector<Recorded> FilesOf(Priority p, const IsLiving& isLiving);
  void Discard(Priority p, const Recorded& file, Fate fate);
  std::string FolderOf(Priority p) const;
  std::string InHoldingFolder(Priority p, const std::string& name) const;

  Parts parts_;
  PerPriority<std::set<std::string>> names_;  // in the holding folders
};

}  // namespace ostrel
