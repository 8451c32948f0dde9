// The record of what is queued, kept by the file system itself: a second name of each entry's file
// under KvData/.pending/<priority>/, or a copy where RtXmit lies on another file system or files
// have no second names. A record is made before the source of its file is deleted and dropped when
// its entry ends, so a station that was killed finds every file whose last block has not gone out.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/priority.h"
#include "base/reporting.h"
#include "intake/file_copy.h"
#include "intake/undeleted_files.h"
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
  explicit EntryRecords(const Parts& parts)
      : parts_(parts), undeleted_(parts.files, Root() + "/.undeleted") {}

  /// Makes the folders and tries whether a file can be written there. Throws Failure when not.
  void Prepare();
  /// The names of the records that an earlier run left.
  std::vector<std::string> List(Priority p) { return parts_.files.ListFiles(FolderOf(p)); }

  /// Records `file`, which waits under `name` and was made of `source`; `source` may be deleted
  /// then. Returns the record's name. Throws Failure when the file is gone. A record that cannot be
  /// made, on a disk without any room say, is done without, with a log line: the name is empty.
  std::string Make(Priority p, const std::string& name, const std::string& file,
                   const std::string& source);
  /// Records `file`, which no queue lists. Returns the path of the record, which the next start
  /// restores to its holding folder where nobody has taken it. Throws Failure.
  std::string MakeOf(Priority p, const std::string& file, const std::string& name);
  /// Makes the file anew out of its record, which stays. Throws Failure.
  void Restore(Priority p, const std::string& record, const std::string& file) {
    Keep(PathOf(p, record), file);
  }
  /// A record that cannot be deleted now is deleted later, by RetryDrops or the next start, which
  /// never takes it for one of a file that waits.
  void Drop(Priority p, const std::string& record);
  void RetryDrops() { undeleted_.Retry(); }

  /// Which folder holds the records, as of the last start or WasReplaced; 0 while there is none.
  std::uint64_t RootId() const { return root_; }
  /// True when another folder stands in its place since the last call, as after a volume came back.
  bool WasReplaced();
  std::string PathOf(Priority p, const std::string& record) const;
  /// True when a record of some priority has the name and the size of `file`.
  bool HasCopyOf(const std::string& file);

  /// The folder in which the records of all priorities lie.
  std::string Root() const { return parts_.values.dataRoot + "/.pending"; }
  /// Gives `file` the second name `kept`, or makes a copy. Throws Failure.
  void Keep(const std::string& file, const std::string& kept);
  /// Deletes a file of the record; a failure is reported. It may be gone with its folder.
  void Delete(const std::string& path);

 private:
  void MakeFolders();
  std::string FreeName(Priority p, const std::string& name);
  void TellOnce(bool& told, const std::string& text);
  std::string FolderOf(Priority p) const;

  Parts parts_;
  UndeletedFiles undeleted_;
  std::uint64_t root_ = 0;
  bool toldOfCopies_ = false, toldOfNone_ = false;
};

}  // namespace ostrel
