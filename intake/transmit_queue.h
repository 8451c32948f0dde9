// The ten queues. An entry is three things: a line of its PriorityList, a file of that name in
// RtXmit, and a record that outlives the program. The queue alone changes them, and together.
//
// An entry waits, is on the air as the first of its list, leaves the list, and ends once nothing of
// it waits in the port any more. Replaced, removed or purged entries end at once. Wherever an entry
// ends, its file and its record go.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/priority.h"
#include "intake/entry_records.h"
#include "intake/handed_back_files.h"
#include "intake/held_files.h"
#include "intake/product_history.h"
#include "intake/quarantine.h"
#include "state/main_fields.h"
#include "state/transmit_status.h"

namespace ostrel {

class TransmitQueue {
 public:
  struct Parts {
    Files& files;
    Clock& clock;
    FileCopy& copy;
    EntryRecords& records;
    HandedBackFiles& handedBack;
    HeldFiles& held;
    Quarantine& quarantine;
    ProductHistory& history;
    Reporting& reporting;
    MainFields& mainFields;
    const SetupFields& setup;
    TransmitStatus& status;
    const ProgramValues& values;
  };
  enum class State {
    kWaits,
    kGivesWay,  // waits, and a newer file is on its way into its place
    kOnAir,     // the first of its list
  };
  struct Entry {
    std::string name;    // as listed
    std::string record;  // empty: there is none
    State state = State::kWaits;
    bool hasFile = true;      // the file of its name in RtXmit is its own
    bool wasRefused = false;  // the sent folder did not take its file
    bool isStopped = false;   // an operator wants no more of its blocks on the air
    int timesInPart = 0;      // it went out without all its blocks
    std::uint64_t home = 0;   // the folder of the records when it came
    std::int64_t bytes = 0;   // of its file, when it came
    milliseconds since{0};    // monotonic: when it came
    ProductRow product = {};  // of the history
    long long blocksSent = 0, blockCount = 0;
  };

  /// A file of RtXmit that is to become an entry.
  struct Placed {
    std::string name;
    bool isMoved = false;  // it is the source itself, which had no room for a second name
  };

  explicit TransmitQueue(const Parts& parts) : parts_(parts) {}

  /// Before the first tick: gives what an earlier run left back to the holding folders, and clears
  /// RtXmit, since the queues start empty. Where nothing can be recorded, what lies in RtXmit may
  /// be the only copy there is, and stays.
  void GiveBack();

  /// `name`, or the next name that is free in RtXmit.
  std::string FreeName(std::string name) const;
  std::string PathOf(const std::string& name) const { return parts_.values.InTransmitFolder(name); }
  /// Where RtXmit was removed: makes it anew, and restores the files of its entries out of their
  /// records. True when it did.
  bool RestoreFolder();
  /// Gives `source` a place in RtXmit under `name` or the next free name. Throws Failure.
  Placed Place(const std::string& source, const std::string& name);
  /// It is not queued: it is deleted, or moved back to `source`; later, where that fails now.
  void TakeBack(const Placed& placed, const std::string& source);

  /// The placed file, which was made of `source`, becomes the last entry of `p`; `source` may be
  /// deleted then. Throws Failure when that cannot be; the file is taken back then, and the queue
  /// as it was.
  void Add(Priority p, const Placed& placed, const std::string& source);
  /// The same in the place of the waiting entry at `position`, which ends.
  void Replace(Priority p, std::size_t position, const Placed& placed, const std::string& source);
  /// The source of the file `name`, the newest entry of `p`, stays: the file becomes independent of
  /// what is written into the source. A failure is reported.
  void Detach(Priority p, const std::string& name);
  /// Before a file is placed that is to replace the entry at `position`: deletes the file of that
  /// entry, so that its name is free. False when this was done before.
  bool MakeRoom(Priority p, std::size_t position);

  /// The first waiting entry of the product of `name`: the part before the first period tells.
  std::optional<std::size_t> PositionOfProduct(Priority p, std::string_view name) const;
  /// The same, the entry on the air included.
  bool HoldsProduct(Priority p, std::string_view name) const;

  /// The operator removes these entries, in any order; the log names each. The one that is on the
  /// air stays, positions beyond the end are ignored.
  void Remove(Priority p, std::vector<std::size_t> positions);

  // An operator's wishes. They throw Failure when the entry is on the air, gives way to a newer
  // file or has lost its own, and when its file cannot be moved; it stays as it was then.
  struct Listed {
    Priority p;
    std::size_t position;
  };
  /// The most urgent entry of that name, in any case, that waits; one that the wishes would refuse
  /// only where none does.
  std::optional<Listed> Find(std::string_view name) const;
  /// Out of the queue, into the folder of what is held. Returns its name there.
  std::string Hold(const Listed& entry);
  /// Out of the queue and through the intake again, into that of `p`.
  void Move(const Listed& entry, Priority p);
  /// In front of all that wait in its queue.
  void PutFirst(const Listed& entry);

  /// Deletes what was last written before `limit` from RtXmit. The entries stay listed until their
  /// turn, which finds no file. Throws Failure when the folder cannot be listed.
  void Purge(UtcTime limit);

  bool IsEmpty(Priority p) const { return entries_[p].empty(); }
  std::size_t Size(Priority p) const { return entries_[p].size(); }
  /// As listed, the one on the air included.
  const std::deque<Entry>& Entries(Priority p) const { return entries_[p]; }
  bool IsOnAir(Priority p) const {
    return !IsEmpty(p) && entries_[p].front().state == State::kOnAir;
  }

  // The entry on the air, in this order

  /// The first entry of `p`, which must not be empty, goes on the air: nobody else changes it from
  /// now on. The result is good until it leaves the list.
  const Entry& Start(Priority p);
  /// Its file has been copied to the sent folder and leaves RtXmit.
  void DropFile(Priority p) { DeleteFile(entries_[p].front()); }
  /// An operator wants no more of it on the air: it is retired at its next turn. Its copy in the
  /// sent folder stays.
  void Stop(Priority p) { entries_[p].front().isStopped = true; }
  /// Block `n` of its `count` was built and goes to the line.
  void CountBlock(Priority p, long long n, long long count);
  /// True while an entry of this name is on the air, in whatever priority, or was interrupted.
  bool IsOnAir(std::string_view name) const;
  /// It has no further block: it leaves the list and ends with the next ReleaseSent.
  void Retire(Priority p);
  /// It went out without all its blocks, for `reason`: it leaves the list, and comes back out of
  /// its record after a while. After the third time it goes to the quarantine instead.
  void RetireInPart(Priority p, const std::string& reason);
  /// Another file of its name took its place in the sent folder: it leaves the list, and its file
  /// comes back out of the record as a new entry, unless a newer one of an overwritten product
  /// waits.
  void SendAgain(Priority p);
  /// The sent folder did not take its file: it leaves the list and comes back after a while. When
  /// its file is certainly gone, and not the whole folder with it, it ends. True when it comes
  /// back.
  bool HoldBack(Priority p);
  /// True while an entry of the product of `name` is held back, in whatever priority.
  bool HoldsBackProduct(std::string_view name) const;

  /// True when retired entries have not ended.
  bool HasSent() const { return !sent_.empty(); }
  /// Nothing of the retired entries waits in the port any more.
  void ReleaseSent();
  /// Lists the entries again that were held back for long enough. Every two seconds: deletes the
  /// records that could not be deleted before, takes back what could not be, and where the folder
  /// of the records was away and came back, restores what they hold and no entry knows.
  void ListHeldBack();

 private:
  /// An entry that has left its list.
  struct Unlisted {
    Priority p;
    Entry entry;
    milliseconds returnAt{};  // monotonic
  };
  void ClearFolder();
  void LookThrough();
  bool HoldsRecord(Priority p, const std::string& record) const;
  void ForEachWithFile(const std::function<void(Priority, Entry&)>& call);
  void RestoreFile(Priority p, Entry& entry);
  void Recover(Priority p, Entry& entry);
  bool MayComeBack(const Entry& entry);
  void WaitToReturn(Priority p, Entry entry);
  void SetAside(Priority p, Entry entry, const std::string& reason);
  Entry Recorded(Priority p, const Placed& placed, const std::string& source);
  bool IsTakenBack(const Placed& placed, const std::string& source);
  void Append(Priority p, Entry entry);
  Entry TakeFirst(Priority p);
  Entry& Waiting(const Listed& listed);
  std::string FileOf(Priority p, const Entry& entry) const;
  void Leave(const Listed& listed);
  void ListAgain(Priority p, Entry entry);
  std::optional<std::size_t> FindProduct(Priority p, std::string_view name,
                                         std::size_t first) const;
  void EndHeldBack(Priority p, std::string_view product);
  bool IsOverwritten(Priority p) const { return IsChecked(parts_.setup.chkOverWrite[p]); }
  void DeleteFile(Entry& entry);
  void End(Priority p, Entry& entry, Fate fate);
  static Fate FateOfRetired(const Entry& entry);

  Parts parts_;
  PerPriority<std::deque<Entry>> entries_;                // as PriorityList shows them
  std::deque<Unlisted> sent_, heldBack_;                  // oldest first
  std::vector<std::pair<Placed, std::string>> unqueued_;  // with their sources: to be taken back
  milliseconds nextLook_{0};                              // monotonic: at the folder of the records
  bool isGivenBack_ = false;                              // what an earlier run left
};

}  // namespace ostrel
