#include "engine/queue_service.h"

#include <algorithm>
#include <fmt/format.h>

namespace ostrel {

namespace {
constexpr std::size_t kNearlyDrained = 50;  // bytes
/// A file that is refused again and again must neither take every turn nor fill the log.
constexpr milliseconds kReturnWait{15'000};
}  // namespace

void QueueService::CheckPriorityLists() {
  if (IsBusy()) return;
  ReleaseFinished();
  ReturnStuckFiles();
  for (const Priority p : AllPriorities()) {
    if (!parts_.mainWindow.PriorityList[p].empty() && parts_.mainWindow.IsIdle(p)) StartFile(p);
    if (!currentFile_[p].empty()) return ServeFile(p);
  }
  InsertFillFile();
}

bool QueueService::IsBusy() {
  return parts_.transmitter.BytesWaiting() > kNearlyDrained || !parts_.engine.PendingPacket.empty();
}

/// A turn comes when the port has nearly drained: then what was in front of the last packet is out.
void QueueService::ReleaseFinished() {
  if (finished_.empty()) return;
  const bool isDrained = parts_.transmitter.BytesWaiting() == 0;
  std::erase_if(finished_, [&](const Finished& finished) {
    if (!isDrained && !finished.isFollowed) return false;
    parts_.pending.Retire(finished.p, finished.file);
    return true;
  });
}

/// In the order in which they got stuck: of one product the later is the newer.
void QueueService::ReturnStuckFiles() {
  const auto isDue = [this](const Stuck& s) { return s.returnAt <= parts_.clock.Monotonic(); };
  while (!stuck_.empty() && isDue(stuck_.front()) && ReturnToHoldingFolder(stuck_.front()))
    stuck_.erase(stuck_.begin());
}

void QueueService::StartFile(Priority p) {
  const auto& queue = parts_.mainWindow.PriorityList[p];
  const std::string file = queue.front();
  parts_.mainWindow.lblSending[p].Set(fmt::format("Sending {}: 1", file));
  for (const Priority other : AllPriorities()) {
    if (currentFile_[other] == file) isDisplaced_[other] = true;
  }
  currentFile_[p] = file;
  isDisplaced_[p] = false;
  parts_.engine.nextBlock[p] = 1;
  isHeldBack_[p] =
      !MoveToSentFolder(p, file) && parts_.files.Exists(parts_.values.InTransmitFolder(file));
  if (isHeldBack_[p]) stuck_.push_back({p, file, parts_.clock.Monotonic() + kReturnWait});
  ++parts_.engine.FilesSent[p];
  auto& maximum = parts_.engine.MaximumCount[p];
  maximum = std::max(maximum, static_cast<int>(queue.size()));
}

bool QueueService::MoveToSentFolder(Priority p, const std::string& file) {
  const auto waiting = parts_.values.InTransmitFolder(file);
  if (IsChecked(parts_.setup.LogIt)) {
    TryStep([&] {
      const auto written = parts_.clock.ToLocal(parts_.files.Status(waiting).written);
      parts_.reporting.WriteLog(
          "Sending", fmt::format("{}  - {} - {}", file, p.number(), FormatLogStamp(written)));
    });
  }
  const bool copied =
      TryStep([&] { parts_.copy.CopyFile(waiting, parts_.values.InSentFolder(file)); });
  TryStep([&] { SetFileWriteTime(parts_.values.InSentFolder(file), parts_.clock.Now()); });
  if (copied) TryStep([&] { parts_.files.Delete(waiting); });
  return copied;
}

/// The entry is retired on its first turn, since there is nothing to serve; the file itself, the
/// only copy there is, takes the way through the intake again. True when it does, or is gone.
bool QueueService::ReturnToHoldingFolder(const Stuck& stuck) {
  if (parts_.files.Exists(parts_.values.InTransmitFolder(stuck.file)))
    return TryStep([&] { parts_.pending.Return(stuck.p, stuck.file); });
  parts_.pending.Retire(stuck.p, stuck.file);
  return true;
}

void QueueService::ServeFile(Priority p) {
  const int n = parts_.engine.nextBlock[p];
  const auto path = parts_.values.InSentFolder(currentFile_[p]);
  if (isHeldBack_[p]) parts_.builder.LogMissing(path);
  const long long count = isHeldBack_[p] ? 0 : parts_.builder.MakePacket(path, n);
  parts_.engine.nextBlock[p] = n + 1;
  if (n > count) return RetireFile(p);
  for (auto& finished : finished_) finished.isFollowed = true;
  parts_.mainWindow.lblSending[p].Set(
      fmt::format("Sending {}: {} of {}", parts_.mainWindow.PriorityList[p].front(), n, count));
}

void QueueService::RetireFile(Priority p) {
  parts_.engine.PendingPacket.clear();
  if (isDisplaced_[p] && !isHeldBack_[p]) {
    parts_.pending.SendAgain(p, currentFile_[p]);
  } else if (!isHeldBack_[p]) {
    finished_.push_back({p, currentFile_[p], false});
  }
  parts_.mainWindow.PriorityList[p].Remove(0);
  parts_.mainWindow.lblSending[p].Set(MainWindow::IdleCaption(p));
  currentFile_[p].clear();
  parts_.engine.nextBlock[p] = 1;
  parts_.mainWindow.lblActivefile.Set("");
  parts_.mainWindow.lblBlkPktNum.Set("");
  parts_.mainWindow.lblBlkPktTot.Set("");
}

void QueueService::InsertFillFile() {
  const auto& fillFile = parts_.setup.Diddle.Get();
  TryStep([&] { SetFileWriteTime(fillFile, parts_.clock.Now()); });
  TryStep([&] { parts_.copy.CopyFile(fillFile, parts_.setup.NameAs.Get(), Links::kFollowed); });
  ++parts_.engine.FillsSent;
}

void QueueService::SetFileWriteTime(const std::string& path, LocalTime time) {
  const auto utc = LocalToUtc(time, parts_.clock.UtcOffset());
  parts_.files.SetLastWriteTime(path, UtcTime(utc.time_since_epoch()));
}

}  // namespace ostrel
