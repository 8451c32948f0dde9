#include "engine/queue_service.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

#include "base/names.h"

namespace ostrel {

namespace {
constexpr std::size_t kNearlyDrained = 50;  // bytes
}

void QueueService::CheckPriorityLists() {
  if (IsBusy()) return;
  for (const Priority p : AllPriorities()) {
    if (!parts_.mainWindow.PriorityList[p].empty() && parts_.mainWindow.IsIdle(p)) StartFile(p);
    if (!currentFile_[p].empty()) return ServeFile(p);
  }
  InsertFillFile();
}

bool QueueService::IsBusy() {
  return parts_.port.BytesWaiting() > kNearlyDrained || !parts_.engine.PendingPacket.empty();
}

void QueueService::StartFile(Priority p) {
  const auto& queue = parts_.mainWindow.PriorityList[p];
  const std::string file = queue.front();
  parts_.mainWindow.lblSending[p].Set(fmt::format("Sending {}: 1", file));
  currentFile_[p] = file;
  parts_.engine.nextBlock[p] = 1;
  MoveToSentFolder(p, file);
  ++parts_.engine.FilesSent[p];
  auto& maximum = parts_.engine.MaximumCount[p];
  maximum = std::max(maximum, static_cast<int>(queue.size()));
}

void QueueService::MoveToSentFolder(Priority p, const std::string& file) {
  const auto waiting = parts_.values.TransmitFolder() + "/" + file;
  if (IsChecked(parts_.setup.LogIt)) {
    TryStep([&] {
      const auto written = parts_.clock.ToLocal(parts_.files.LastWriteTime(waiting));
      parts_.reporting.WriteLog(
          "Sending", fmt::format("{}  - {} - {}", file, p.number(), FormatLogStamp(written)));
    });
  }
  const bool copied = TryStep([&] { parts_.copy.CopyFile(waiting, InSentFolder(file)); });
  TryStep([&] { SetFileWriteTime(InSentFolder(file), parts_.clock.Now()); });
  if (copied) {
    TryStep([&] { parts_.files.Delete(waiting); });
  } else {
    isStuck_[p] = !ReturnToHoldingFolder(p, waiting);
  }
}

/// The entry is retired on this turn, since there is nothing to serve; the file itself, the only
/// copy there is, takes the way through the intake again. True when it does, or is gone.
bool QueueService::ReturnToHoldingFolder(Priority p, const std::string& waiting) {
  if (!parts_.files.Exists(waiting)) return true;
  const auto folder = parts_.values.HoldingFolder(p.number());
  return TryStep([&] {
    const auto name = FirstFreeName(std::string(FileNameOf(waiting)), [&](const std::string& n) {
      return parts_.files.Exists(JoinPath(folder, n));
    });
    parts_.files.Rename(waiting, JoinPath(folder, name));
  });
}

void QueueService::ServeFile(Priority p) {
  const int n = parts_.engine.nextBlock[p];
  const long long count = parts_.builder.MakePacket(InSentFolder(currentFile_[p]), n);
  parts_.engine.nextBlock[p] = n + 1;
  if (n > count) return RetireFile(p);
  parts_.mainWindow.lblSending[p].Set(
      fmt::format("Sending {}: {} of {}", parts_.mainWindow.PriorityList[p].front(), n, count));
}

void QueueService::RetireFile(Priority p) {
  parts_.engine.PendingPacket.clear();
  if (!std::exchange(isStuck_[p], false)) parts_.pending.Retire(p, currentFile_[p]);
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
  TryStep([&] { parts_.copy.CopyFile(fillFile, parts_.setup.NameAs.Get()); });
  ++parts_.engine.FillsSent;
}

void QueueService::SetFileWriteTime(const std::string& path, LocalTime time) {
  const auto utc = LocalToUtc(time, parts_.clock.UtcOffset());
  parts_.files.SetLastWriteTime(path, UtcTime(utc.time_since_epoch()));
}

std::string QueueService::InSentFolder(const std::string& file) const {
  return parts_.values.SentFolder() + "/" + file;
}

}  // namespace ostrel
