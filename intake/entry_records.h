// The record of what is queued, kept by the file system itself: a second name of each entry's file
// under KvData/.pending/<priority>/, or a copy where RtXmit lies on another file system or files
// have no second names. A record is made before the source of its file is deleted and dropped when
// its entry ends, so a station that was killed finds every file whose last block has not gone out.
#pragma once

#include <string>
#include <vector>

#include "base/priority.h"
#include "base/reporting.h"
#include "intake/file_copy.h"
#include "platform/files.h"
#include "state/program_values.h"

namespace ostrel {

class EntryRecords {
 public:
  struct Parts {
    Files& files;
    FileCopy& copy;
    Reporting& reporting;
    const ProgramValues& values;
  };
  explicit EntryRecords(const Parts& parts) : parts_(parts) {}

  /// Makes the folders and tries whether a file can be written there. Throws Failure when not.
  void Prepare();
  /// The names of the records that an earlier run left.
  std::vector<std::string> List(Priority p) { return parts_.files.ListFiles(FolderOf(p)); }

  /// Records `file`, which waits under `name` and was made of `source`; `source` may be deleted
  /// then. Returns the record's name. Throws Failure when the disk is full or the file is gone: it
  /// must not be queued then. A record that cannot be made for another reason is done without, with
  /// a log line: the name is empty.
  std::string Make(Priority p, const std::string& name, const std::string& file,
                   const std::string& source);
  /// Records a copy of `file`, which no queue lists. Returns the path of the record, which the next
  /// start gives back where nobody has taken it. Throws Failure.
  std::string MakeCopy(Priority p, const std::string& file, const std::string& name);
  /// Makes the file anew out of its record, which stays. Throws Failure.
  void Restore(Priority p, const std::string& record, const std::string& file) {
    Keep(PathOf(p, record), file);
  }
  void Drop(Priority p, const std::string& record) { Delete(PathOf(p, record)); }
  std::string PathOf(Priority p, const std::string& record) const;

  /// The folder in which the records of all priorities lie.
  std::string Root() const { return parts_.values.dataRoot + "/.pending"; }
  /// Gives `file` the second name `kept`, or makes a copy. Throws Failure.
  void Keep(const std::string& file, const std::string& kept);
  /// Deletes a file of the record; a failure is reported. It may be gone with its folder.
  void Delete(const std::string& path);

 private:
  void MakeFolders();
  void TellOnce(bool& told, const std::string& text);
  std::string FolderOf(Priority p) const;

  Parts parts_;
  bool toldOfCopies_ = false, toldOfNone_ = false;
};

}  // namespace ostrel
