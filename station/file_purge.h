// Deletes files that waited too long, and sees how much room there is: looks at its folders at its
// start and every minute, and removes what was last written before the age limit. The transmit
// folder belongs to the queue, which is asked to do it there. A file on the air, or interrupted
// there, stays until it is off.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "base/reporting.h"
#include "intake/transmit_queue.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/timer.h"
#include "state/transmit_status.h"

namespace ostrel {

class FilePurge {
 public:
  struct Parts {
    Files& files;
    Clock& clock;
    Timer& timer;
    TransmitQueue& queue;
    Reporting& reporting;
    TransmitStatus& status;
    const ProgramValues& values;
  };
  explicit FilePurge(const Parts& parts);
  FilePurge(const FilePurge&) = delete;
  FilePurge& operator=(const FilePurge&) = delete;

  /// A folder, with a separator at its end, and its age limit in hours: a registration in the
  /// making. An age of 0 or less purges nothing, so that a mistyped limit does not empty the
  /// queues.
  void SetPurgeFolder(std::string folder) { next_.folder = std::move(folder); }
  void SetPurgeAge(milliseconds age) { next_.age = age; }
  /// Adds what was set to the registered folders.
  void AddPurgeFolder() { folders_.push_back(next_); }
  /// Looks at the folders now, and from now on every minute.
  void StartPurge();
  void StopPurge() { parts_.timer.Stop(); }
  /// What is to be looked at as often.
  void AlsoLook(std::function<void()> look) { alsoLook_ = std::move(look); }

 private:
  struct Registration {
    std::string folder;
    milliseconds age{0};
  };
  void Purge();
  void PurgeFolder(const Registration& registration);

  Parts parts_;
  std::function<void()> alsoLook_ = [] {};
  Registration next_;
  std::vector<Registration> folders_;
};

}  // namespace ostrel
