// Decides at each turn which file the next packet comes from: strict priority, pre-emption at block
// boundaries, the fill file when every queue is empty.
#pragma once

#include <string>

#include "engine/packet_builder.h"
#include "intake/file_copy.h"
#include "intake/pending_files.h"
#include "platform/serial_port.h"

namespace ostrel {

class QueueService {
 public:
  struct Parts {
    Files& files;
    Clock& clock;
    SerialPort& port;
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
  bool IsBusy();
  void StartFile(Priority p);
  void MoveToSentFolder(Priority p, const std::string& file);
  bool ReturnToHoldingFolder(Priority p, const std::string& waiting);
  void ServeFile(Priority p);
  void RetireFile(Priority p);
  void InsertFillFile();
  void SetFileWriteTime(const std::string& path, LocalTime time);
  std::string InSentFolder(const std::string& file) const;

  Parts parts_;
  PerPriority<std::string> currentFile_;
  /// The file could neither be moved nor given back: its record stays for the next start.
  PerPriority<bool> isStuck_;
};

}  // namespace ostrel
