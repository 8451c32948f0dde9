// The record of what is queued, kept by the file system itself: a second name under
// KvData/.pending/<priority>/ for every file in RtXmit that has a queue entry, or a copy where the
// two lie on different file systems or there are no second names. It is made before
// the file's source is deleted and dropped when the entry is retired, replaced, removed or purged.
// So a station that was killed finds at its next start every file whose last block has not gone
// out, and gives it back to the holding folder of its priority. There a third name, under
// KvData/.pending/back/<priority>/, tells it from files that are newly received, until the intake
// has taken it.
#pragma once

#include <deque>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "base/priority.h"
#include "base/reporting.h"
#include "intake/file_copy.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "state/engine.h"
#include "state/setup.h"

namespace ostrel {

class PendingFiles {
 public:
  struct Parts {
    Files& files;
    Clock& clock;
    FileCopy& copy;
    Reporting& reporting;
    const Setup& setup;
    const ProgramValues& values;
  };
  explicit PendingFiles(const Parts& parts) : parts_(parts) {}

  /// Before the first tick: makes the folders, gives back what an earlier run left, and clears what
  /// lies in RtXmit, since the queues start empty. Of a product that is overwritten by newer files
  /// only the newest comes back; what is past the purge age does not.
  void HandBack();

  /// The file `name` in RtXmit, made of `source`, gets an entry in the queue of `p`, and `source`
  /// may be deleted. Throws Failure when the disk is full or the file is gone: it must not be
  /// queued then. A record that cannot be made for another reason is done without, with a log line.
  void Add(Priority p, const std::string& name, const std::string& source);
  /// The same for a file that takes the place of the waiting entry `replaced`, whose record goes.
  void Replace(Priority p, const std::string& replaced, const std::string& name,
               const std::string& source);
  /// The entry that was on the air is retired: the oldest of this name.
  void Retire(Priority p, const std::string& name);
  /// An entry that waits is removed: the newest of this name.
  void Drop(Priority p, const std::string& name);
  /// The entry of `name` could not start: the file goes back from RtXmit to the holding folder of
  /// `p` and through the intake again. Of a product that is overwritten it takes the place of one
  /// that went back before. Throws Failure when it has to stay.
  void Return(Priority p, const std::string& name);
  /// The entry that was on the air lost its place in the sent folder to another file of its name:
  /// it is retired, and what the record holds goes back to the holding folder of `p`.
  void SendAgain(Priority p, const std::string& name);
  /// The purge deleted `name` from RtXmit.
  void Purged(const std::string& name);

  /// True for a file of the holding folder that came back from the record: it has been through the
  /// intake before, and all that came since is newer.
  bool IsHandedBack(Priority p, const std::string& name) const { return back_[p].contains(name); }
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
  void ProbeRecord();
  bool Record(const std::string& file, const std::string& record, const std::string& source);
  void Keep(const std::string& file, const std::string& record);
  void TellOnce(bool& told, const std::string& text);
  void HandBack(Priority p);
  std::vector<Recorded> RecordOf(Priority p);
  void GiveBack(Priority p, const std::string& link);
  std::string MoveBack(Priority p, const std::string& path, const std::string& wantedName);
  void DiscardReturned(Priority p, const std::string& name);
  void ClearTransmitFolder();
  std::string FolderOf(Priority p) const;
  std::string BackFolderOf(Priority p) const;
  std::string InHoldingFolder(Priority p, const std::string& name) const;
  std::string Root() const { return parts_.values.dataRoot + "/.pending"; }
  void Remove(Priority p, const std::string& link) { Delete(FolderOf(p) + "/" + link); }
  void Delete(const std::string& record);

  Parts parts_;
  bool toldOfCopies_ = false, toldOfNone_ = false;
  /// The links of the entries of one name, oldest first: while A.TXT is on the air, its name in
  /// RtXmit is free for a newer one.
  PerPriority<std::map<std::string, std::deque<std::string>>> links_;
  PerPriority<std::set<std::string>> back_;  // names in the holding folders
};

/// The purge age: the number at the start of the field, in hours; zero or less purges nothing.
milliseconds PurgeAge(const Setup& setup);

}  // namespace ostrel
