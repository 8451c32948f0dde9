// Moves files from the ten holding folders into the transmit folder and enters each in the queue of
// its priority.
#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>

#include "intake/compression.h"
#include "intake/handed_back_files.h"
#include "intake/held_products.h"
#include "intake/obstacles.h"
#include "intake/placed_files.h"
#include "intake/stepped_over_files.h"
#include "intake/transmit_queue.h"

namespace ostrel {

class QueueIntake {
 public:
  struct Parts {
    Files& files;
    Clock& clock;
    Compression& compression;
    TransmitQueue& queue;
    HandedBackFiles& handedBack;
    Obstacles& obstacles;
    ProductHistory& history;
    Reporting& reporting;
    const SetupFields& setup;
    const ProgramValues& values;
  };
  explicit QueueIntake(const Parts& parts)
      : parts_(parts),
        placed_(parts.files),
        steppedOver_(parts.files, parts.clock),
        products_(parts.files) {}

  /// One file from each holding folder that has one, priority 1 first. A file that cannot be read,
  /// or not be deleted once it is queued, is passed over for a while after its report.
  void CheckForNewPriFiles();

 private:
  void TakeOne(Priority p);
  void NoteRefusal(Priority p);
  std::optional<std::string> NextFile(Priority p);
  bool IsPassedOver(const std::string& folder, const std::string& name);
  std::unique_ptr<FileHold> Hold(const std::string& source);
  std::optional<std::string> Queue(Priority p, const std::string& source);
  std::string OldestOfProduct(Priority p, const std::string& file);
  bool CanBeRead(const std::string& path) const;
  bool IsOverwritten(Priority p) const { return IsChecked(parts_.setup.chkOverWrite[p]); }
  bool IsSuperseded(Priority p, const std::string& file) const;
  void MakeRoom(Priority p, std::size_t position, const std::string& name);
  std::optional<TransmitQueue::Placed> Place(Priority p, const std::string& source,
                                             const std::string& name);
  void Enter(Priority p, std::optional<std::size_t> position, const TransmitQueue::Placed& placed,
             const std::string& source);
  /// Runs a step; while the file is in use elsewhere it is tried again, 20 times in one call of the
  /// intake for all steps together. Returns true when it did its work.
  template <typename Step>
  bool RunRetried(const std::string& file, Step&& step);

  /// The last step of a priority that was given up.
  struct Refused {
    std::string file;  // empty for the folder
    std::string why;
  };

  Parts parts_;
  std::optional<Refused> refused_;
  PlacedFiles placed_;
  SteppedOverFiles steppedOver_;
  HeldProducts products_;
  std::set<std::string> underway_;  // paths of large files that are not ready
  int retries_ = 0;
};

}  // namespace ostrel
