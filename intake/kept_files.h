// What no rule names is thrown away. While a rule list is unknown (lost, or not to be read) nobody
// can tell whether a rule names a file; such files are kept in a folder of their own, out of the
// way of those that the known rules name, until every list is there again.
#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>

#include "base/reporting.h"
#include "intake/file_copy.h"
#include "intake/obstacles.h"
#include "intake/product_history.h"
#include "intake/rule_lists.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "state/program_values.h"

namespace ostrel {

class KeptFiles {
 public:
  struct Parts {
    Files& files;
    Clock& clock;
    FileCopy& copy;
    const RuleLists& rules;
    Obstacles& obstacles;
    ProductHistory& history;
    Reporting& reporting;
    const ProgramValues& values;
  };
  explicit KeptFiles(const Parts& parts) : parts_(parts) {}

  /// While a list is unknown.
  bool IsKeeping() const { return !parts_.rules.AllAreKnown(); }
  /// A file that no known rule names, before its caller deletes it: placed in the folder under a
  /// free name while a list is unknown. Returns its path there; nothing for a file that nobody
  /// wants. Of 10,000 files the 1,000 oldest make room for those that follow, with a log line.
  /// Throws Failure when it cannot be placed.
  std::string Keep(const std::string& path, const std::string& name);

  /// Once every list is known: what is kept is to go back to the ingest folder, the oldest first.
  /// A failure to list it is reported.
  void BeginGivingBack();
  /// One file, for an ingest folder that is empty: the line is fed between two of them. A file past
  /// the purge age is deleted, as it would have been in a queue. A failure is reported and ends it;
  /// what is left stays until it is begun again.
  void GiveOneBack();

 private:
  void MakeRoom();
  std::deque<std::string> OldestFirst();
  void Return(const std::string& name);
  bool IsTooOld(const std::string& path);
  void Drop(const std::string& name);
  std::string PathOf(const std::string& name) const;

  Parts parts_;
  std::optional<std::size_t> count_;  // of the files in the folder, once it was looked at
  std::deque<std::string> waiting_;   // to be given back
};

}  // namespace ostrel
