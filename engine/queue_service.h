// Decides at each turn which file the next packet comes from: strict priority, pre-emption at block
// boundaries, the fill file when every queue is empty.
#pragma once

#include <optional>
#include <string>

#include "engine/packet_builder.h"
#include "intake/file_copy.h"
#include "intake/obstacles.h"
#include "intake/transmit_queue.h"
#include "radio/transmitter.h"

namespace ostrel {

/// What may still wait in the port at a turn, in bytes.
inline constexpr std::size_t kNearlyDrained = 50;

class QueueService {
 public:
  struct Parts {
    Files& files;
    Clock& clock;
    Transmitter& transmitter;
    FileCopy& copy;
    PacketBuilder& builder;
    TransmitQueue& queue;
    Obstacles& obstacles;
    Reporting& reporting;
    MainFields& mainFields;
    const SetupFields& setup;
    TransmitStatus& status;
    const ProgramValues& values;
  };
  explicit QueueService(const Parts& parts) : parts_(parts) {}

  /// One turn. Builds at most one packet; nothing while more than 50 bytes wait in the port or a
  /// packet waits to be sent. A file of c blocks takes c + 1 turns: the last one retires it. A
  /// failure is reported.
  void CheckPriorityLists();

 private:
  /// The first entry of a queue while it is sent from the sent folder.
  struct OnAir {
    std::string file;
    int nextBlock = 1;
    long long blockCount = 0;  // as the last look at the file said
    /// While it waited for a more urgent file, that took its place in the sent folder.
    bool isDisplaced = false;
    /// A block could not be read, or the file not be looked at.
    std::optional<Failure> unread = {};
  };

  void TakeTurn();
  bool IsBusy();
  void ReleaseSent();
  bool StartFile(Priority p);
  void CountStart(Priority p, const std::string& file);
  void LogStart(Priority p, const std::string& file);
  std::optional<Failure> CopyToSentFolder(const TransmitQueue::Entry& entry);
  void PutOnAir(Priority p, const std::string& file);
  void HoldBack(Priority p, const TransmitQueue::Entry& entry, const Failure& refusal);
  void ServeFile(Priority p);
  bool IsReady(Priority p);
  bool IsUnread(const std::optional<Failure>& why);
  void RetireFile(Priority p);
  void ShowIdle(Priority p);
  void InsertFillFile();
  void PlaceFill(const std::string& fillFile, const std::string& place);
  bool FillIsReadable(const std::string& path);
  void RestoreHoldingFolders();
  bool MayPlaceFill(const std::string& place);
  bool IsInHoldingFolder(const std::string& path);
  void SetFileWriteTime(const std::string& path, LocalTime time);

  Parts parts_;
  PerPriority<std::optional<OnAir>> onAir_;
  /// A packet was built after the last entry was retired.
  bool isFollowed_ = false;
  std::string refusedFillPlace_;  // the last one that the log tells of
};

}  // namespace ostrel
