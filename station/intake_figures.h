// What waits outside the queues, in figures: how many files lie in each folder that a received file
// passes through, and which of them cannot go on.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "intake/obstacles.h"
#include "intake/quarantine.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "state/program_values.h"

namespace ostrel {

struct FolderFigures {
  int files = 0;
  bool isMore = false;  // there are more: nobody counted on
  /// Since the last write to one of the first thousand; nothing when the folder is empty.
  std::optional<milliseconds> oldest;
  std::string trouble;  // why it cannot be listed; empty when it can
};

/// A file, or a folder as a whole, that cannot go on.
struct ObstacleFigures {
  std::string folder;  // its name, as in "RtPri3"
  std::string name;    // of the file; empty for the folder
  std::string reason;
  milliseconds lasts{0};
  std::optional<milliseconds> nextTry;  // from now; nothing for one that is tried all the time
};

struct IntakeFigures {
  FolderFigures ingest;
  FolderFigures holding;      // of all ten priorities together
  FolderFigures compression;  // awaiting a block
  FolderFigures kept;         // while a rule list is unknown
  FolderFigures quarantine;
  std::optional<ObstacleFigures> blocking;  // holds the ingest folder up
  std::vector<ObstacleFigures> refused;     // the longest first; not all of many
  int refusedCount = 0;                     // of all
};

class IntakeCount {
 public:
  struct Parts {
    Files& files;
    const Clock& clock;
    Obstacles& obstacles;
    Quarantine& quarantine;
    const ProgramValues& values;
  };
  explicit IntakeCount(const Parts& parts) : parts_(parts) {}

  /// The obstacles as they are; the files as they were counted last, a moment ago, or longer ago
  /// where counting takes long: it takes a hundredth of the time at most.
  IntakeFigures Look();

 private:
  void Count();
  FolderFigures CountIn(const std::string& folder);
  void CountIn(const std::string& folder, FolderFigures& figures);
  void NoteAge(const std::string& path, FolderFigures& figures);
  ObstacleFigures FiguresOf(const Obstacles::Placed& place);

  Parts parts_;
  IntakeFigures counted_;
  milliseconds nextCount_{0};  // monotonic
};

}  // namespace ostrel
