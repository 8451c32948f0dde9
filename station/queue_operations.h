// What operators ask of the queues by name, through the programs beside the station: each wish is
// carried out by the station's own steps, and leaves a line in the log with the account that asked.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "base/priority.h"
#include "base/reporting.h"
#include "intake/entry_records.h"
#include "intake/handed_back_files.h"
#include "intake/held_files.h"
#include "intake/obstacles.h"
#include "intake/product_history.h"
#include "intake/quarantine.h"
#include "intake/transmit_queue.h"
#include "state/transmit_status.h"
#include "station/activity.h"

namespace ostrel {

class QueueOperations {
 public:
  struct Parts {
    Activity& activity;
    Files& files;
    TransmitQueue& queue;
    HeldFiles& held;
    Quarantine& quarantine;
    Obstacles& obstacles;
    HandedBackFiles& handedBack;
    EntryRecords& records;
    ProductHistory& history;
    Reporting& reporting;
    const SetupFields& setup;
    TransmitStatus& status;
    const ProgramValues& values;
  };
  explicit QueueOperations(const Parts& parts) : parts_(parts) {}

  // Each returns what was done, in a sentence, or throws Failure with what kept it from that; then
  // nothing was done. Names are those of the lists, in any case; `account` is who asks.
  std::string Hold(const std::string& account, const std::string& name);
  std::string Release(const std::string& account, const std::string& name);
  /// An entry of a queue goes through the intake again, into the queue of `p`.
  std::string Move(const std::string& account, const std::string& name, Priority p);
  /// An entry goes in front of those that wait in its queue.
  std::string PutFirst(const std::string& account, const std::string& name);
  /// The file on the air ends at its next block; with a name, that one of those on the air.
  std::string Stop(const std::string& account, const std::string& name);
  /// An entry that waits, or a file that is held.
  std::string Delete(const std::string& account, const std::string& name);

  /// A file that waits outside the queues goes to the quarantine. Without a name the one that has
  /// been kept from going on the longest, and only for a reason of its own: where the disk is full,
  /// say, each file would follow it.
  std::string SetAside(const std::string& account, const std::string& name);
  /// One of the quarantine goes back to where it was.
  std::string Restore(const std::string& account, const std::string& name);
  std::string DeleteSetAside(const std::string& account, const std::string& name);

  /// A product that was sent, as the history knows it.
  struct Resend {
    std::string file;  // in the sent folder, or among those held of this priority
    Priority p;
    bool isHeld = false;
    std::string name;     // as it was received
    std::int64_t id = 0;  // of its row; none
  };
  std::string SendAgain(const std::string& account, const Resend& resend);

  /// Received files stay in the ingest folder until this is taken back or the station ends.
  std::string PauseIntake(const std::string& account);
  std::string ResumeIntake(const std::string& account);

 private:
  std::string Run(const std::string& account, const std::function<std::string()>& operation);
  TransmitQueue::Listed FindQueued(const std::string& name) const;
  Priority FindOnAir(const std::string& name) const;
  void CheckThatItIsAlone(Priority p, const std::string& name) const;
  std::string FindOutside(const std::string& name) const;
  std::string FindBlocker() const;
  bool HasOwnTrouble(const std::string& path) const;
  std::optional<Priority> PriorityOf(const std::string& path) const;
  Quarantine::Item FindSetAside(const std::string& name) const;
  std::string GiveCopy(const std::string& source, Priority p, const std::string& file);

  Parts parts_;
};

}  // namespace ostrel
