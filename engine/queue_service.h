// Decides at each turn which file the next packet comes from: strict priority, pre-emption at block
// boundaries, the fill file when every queue is empty.
#pragma once

#include <string>
#include <vector>

#include "engine/packet_builder.h"
#include "intake/file_copy.h"
#include "intake/pending_files.h"
#include "radio/transmitter.h"

namespace ostrel {

class QueueService {
 public:
  struct Parts {
    Files& files;
    Clock& clock;
    Transmitter& transmitter;
    FileCopy& copy;
    PacketBuilder& builder;
    PendingFiles& pending;
    Reporting& reporting;
    MainWindow& mainWindow;
    const Setup& setup;
    Engine& engine;
    const ProgramValues& values;
  };
  explicit QueueService(const Parts& parts) : parts_(parts) {}

  /// One turn. Builds at most one packet; nothing while more than 50 bytes wait in the port or a
  /// packet waits to be sent. A file of c blocks takes c + 1 turns: the last one retires it.
  void CheckPriorityLists();

 private:
  /// A file whose last block was built; its record goes when nothing of that block waits any more.
  struct Finished {
    Priority p;
    std::string file;
    bool isFollowed;  // by a packet of another file
  };
  /// A file of RtXmit that could not be moved to the sent folder.
  struct Stuck {
    Priority p;
    std::string file;
    milliseconds returnAt;  // monotonic
  };

  bool IsBusy();
  void ReleaseFinished();
  void ReturnStuckFiles();
  void StartFile(Priority p);
  bool MoveToSentFolder(Priority p, const std::string& file);
  bool ReturnToHoldingFolder(const Stuck& stuck);
  void ServeFile(Priority p);
  void RetireFile(Priority p);
  void InsertFillFile();
  void SetFileWriteTime(const std::string& path, LocalTime time);

  Parts parts_;
  PerPriority<std::string> currentFile_;
  /// The current file could not be moved. Nothing is served then: what the sent folder holds under
  /// its name is an older one.
  PerPriority<bool> isHeldBack_;
  /// While the current file waited for a more urgent one, that took its place in the sent folder.
  PerPriority<bool> isDisplaced_;
  std::vector<Finished> finished_;
  std::vector<Stuck> stuck_;
};

}  // namespace ostrel
