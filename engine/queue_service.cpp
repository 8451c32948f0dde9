#include "engine/queue_service.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

#include "base/names.h"
#include "base/text.h"
#include "intake/missing_folder.h"

namespace ostrel {

namespace {
constexpr std::size_t kLastStarted = 5;
}  // namespace

void QueueService::CheckPriorityLists() {
  const auto failure = FailureIn([this] { TakeTurn(); });
  if (!failure) return;
  parts_.reporting.ReportError(*failure, "CheckPriorityLists");
  parts_.status.noPacketBecause = failure->text();
}

void QueueService::TakeTurn() {
  if (IsBusy()) return;
  ReleaseSent();
  parts_.queue.ListHeldBack();
  for (const Priority p : AllPriorities()) {
    if (!onAir_[p] && IsReady(p) && !StartFile(p)) return;
    if (onAir_[p]) return ServeFile(p);
  }
  InsertFillFile();
}

/// A large file whose way to the sent folder is still being made, onto another disk say, lets the
/// less urgent ones go on.
bool QueueService::IsReady(Priority p) {
  if (parts_.queue.IsEmpty(p)) return false;
  const auto& path = parts_.queue.PathOf(parts_.queue.Entries(p).front().name);
  return parts_.files.IsReady(path, parts_.values.SentFolder(), Means::kPlace);
}

bool QueueService::IsBusy() {
  return parts_.transmitter.BytesWaiting() > kNearlyDrained || !parts_.status.PendingPacket.empty();
}

/// A turn comes when the port has nearly drained: then what was in front of the last packet is out.
void QueueService::ReleaseSent() {
  if (parts_.queue.HasSent() && (isFollowed_ || parts_.transmitter.BytesWaiting() == 0))
    parts_.queue.ReleaseSent();
}

/// False when the sent folder does not take the file: there is nothing to serve in this turn then.
bool QueueService::StartFile(Priority p) {
  const auto& entry = parts_.queue.Start(p);
  parts_.mainFields.lblSending[p].Set(fmt::format("Sending {}: 1", entry.name));
  if (!entry.wasRefused) {
    LogStart(p, entry.name);
    CountStart(p, entry.name);
  }
  if (const auto refusal = CopyToSentFolder(entry)) {
    HoldBack(p, entry, *refusal);
    return false;
  }
  parts_.queue.DropFile(p);
  PutOnAir(p, entry.name);
  return true;
}

void QueueService::CountStart(Priority p, const std::string& file) {
  ++parts_.status.FilesSent[p];
  ++parts_.status.filesSinceStart;
  auto& last = parts_.status.LastStarted;
  last.push_front({parts_.clock.Now(), file});
  if (last.size() > kLastStarted) last.pop_back();
  auto& maximum = parts_.status.MaximumCount[p];
  maximum = std::max(maximum, static_cast<int>(parts_.queue.Size(p)));
}

void QueueService::LogStart(Priority p, const std::string& file) {
  if (!IsChecked(parts_.setup.LogIt)) return;
  TryStep([&] {
    const auto written =
        parts_.clock.ToLocal(parts_.files.Status(parts_.queue.PathOf(file)).written);
    parts_.reporting.WriteLog(
        "Sending", fmt::format("{}  - {} - {}", file, p.number(), FormatLogStamp(written)));
  });
}

/// Returns why it could not be done. What the sent folder holds of this name is an older file then.
std::optional<Failure> QueueService::CopyToSentFolder(const TransmitQueue::Entry& entry) {
  if (!entry.hasFile) return Failure(failure_number::kFileNotFound, "File not found");
  std::optional<Failure> refusal;
  const auto sent = parts_.values.InSentFolder(entry.name);
  const auto copy = [&] { parts_.copy.PlaceFile(parts_.queue.PathOf(entry.name), sent); };
  try {
    copy();
  } catch (const std::exception& error) {
    bool isRestored = parts_.queue.RestoreFolder();
    isRestored |= RestoreFolder(parts_.files, parts_.reporting, parts_.values.SentFolder());
    if (!isRestored || !TryStep(copy)) refusal = AsFailure(error);
  }
  TryStep([&] { SetFileWriteTime(sent, parts_.clock.Now()); });
  return refusal;
}

void QueueService::PutOnAir(Priority p, const std::string& file) {
  for (auto& other : onAir_) {
    if (other && other->file == file) other->isDisplaced = true;
  }
  onAir_[p] = OnAir{file};
  parts_.status.blocksBuilt[p] = 0;
}

/// The file is the only one there is. It is counted once, and the log tells of it once.
void QueueService::HoldBack(Priority p, const TransmitQueue::Entry& entry, const Failure& refusal) {
  const auto name = entry.name;
  const bool isKnown = entry.wasRefused;
  if (!isKnown) parts_.builder.LogMissing(parts_.values.InSentFolder(name));
  const bool isHeld = parts_.queue.HoldBack(p);
  if (isHeld) parts_.obstacles.Refuse(parts_.queue.PathOf(name), refusal.text());
  if (isHeld && !isKnown) {
    parts_.reporting.WriteLog(
        "Pending", fmt::format("{} stays in RtXmit and is tried again: it cannot be copied to "
                               "RtSent. {}",
                               name, refusal.text()));
  }
  ShowIdle(p);
}

void QueueService::ServeFile(Priority p) {
  if (parts_.queue.Entries(p).front().isStopped) return RetireFile(p);
  auto& onAir = *onAir_[p];
  const int n = onAir.nextBlock++;
  const auto [count, why] = parts_.builder.MakePacket(parts_.values.InSentFolder(onAir.file), n);
  const bool isOut = onAir.blockCount > 0 && n > onAir.blockCount;  // all of it was read before
  if (IsUnread(why) && !isOut) onAir.unread = why;
  if (!why) onAir.blockCount = count;
  if (n > count) return RetireFile(p);
  isFollowed_ = true;
  parts_.status.blocksBuilt[p] = n;
  if (!parts_.status.PendingPacket.empty()) parts_.queue.CountBlock(p, n, count);
  parts_.status.block = BlockOnAir{p, onAir.file, n, count};
  parts_.mainFields.lblSending[p].Set(fmt::format("Sending {}: {} of {}", onAir.file, n, count));
}

/// A file that somebody deleted is finished; one whose whole folder went away is not.
bool QueueService::IsUnread(const std::optional<Failure>& why) {
  if (!why || !why->IsMissing()) return why.has_value();
  return why->number() == failure_number::kPathNotFound;
}

void QueueService::RetireFile(Priority p) {
  const bool isStopped = parts_.queue.Entries(p).front().isStopped;
  if (onAir_[p]->isDisplaced && !isStopped)
    parts_.queue.SendAgain(p);
  else if (onAir_[p]->unread && !isStopped)
    parts_.queue.RetireInPart(p, onAir_[p]->unread->text());
  else
    parts_.queue.Retire(p);
  onAir_[p].reset();
  isFollowed_ = false;
  ShowIdle(p);
}

void QueueService::ShowIdle(Priority p) {
  parts_.status.PendingPacket.clear();
  parts_.status.block.reset();
  parts_.mainFields.lblSending[p].Set(MainFields::IdleCaption(p));
  parts_.mainFields.lblActivefile.Set("");
  parts_.mainFields.lblBlkPktNum.Set("");
  parts_.mainFields.lblBlkPktTot.Set("");
}

/// Not while one is held back: each would be refused like the one before, and they would pile up.
void QueueService::InsertFillFile() {
  const auto& fillFile = parts_.setup.Diddle.Get();
  const auto& insertedAs = parts_.setup.NameAs.Get();
  if (parts_.queue.HoldsBackProduct(ToUpper(FileNameOf(insertedAs)))) return;
  TryStep([&] { SetFileWriteTime(fillFile, parts_.clock.Now()); });
  if (FillIsReadable(fillFile) && MayPlaceFill(insertedAs)) PlaceFill(fillFile, insertedAs);
  ++parts_.status.FillsSent;
  ++parts_.status.fillsSinceStart;
}

void QueueService::PlaceFill(const std::string& fillFile, const std::string& place) {
  // A fill text that a power failure empties is made again.
  const auto failure =
      FailureIn([&] { parts_.copy.CopyFile(fillFile, place, Links::kFollowed, Flush::kNever); });
  if (!failure) return;
  parts_.status.noPacketBecause = failure->text();
  RestoreHoldingFolders();
}

/// Nothing else would tell why the transmitter is keyed and sends nothing.
bool QueueService::FillIsReadable(const std::string& path) {
  std::string text;
  const auto failure = FailureIn([&] { text = parts_.files.ReadAll(path); });
  auto why = failure ? failure->text() : "";
  if (!failure && text.empty()) why = "It is empty: " + path;
  parts_.status.SetUnusable("fill file", why);
  const bool isMissing = failure && failure->IsMissing();  // perhaps it is to be so
  parts_.status.noPacketBecause =
      why.empty() || isMissing ? "" : "The fill file cannot be sent. " + why;
  return !failure;
}

void QueueService::RestoreHoldingFolders() {
  for (const Priority p : AllPriorities())
    RestoreFolder(parts_.files, parts_.reporting, parts_.values.HoldingFolder(p.number()));
}

/// What lies in a holding folder under this name is the fill before. Anywhere else it is somebody's
/// file, and a fill is never sent from there.
bool QueueService::MayPlaceFill(const std::string& place) {
  if (!parts_.files.Exists(place) || IsInHoldingFolder(place)) return true;
  auto& why = parts_.status.noPacketBecause;
  why = fmt::format("The fill file is not written over {}: that is in none of KvData/RtPri1 to 10.",
                    place);
  if (std::exchange(refusedFillPlace_, place) != place)
    parts_.reporting.WriteLog("CheckPriorityLists", why);
  return false;
}

bool QueueService::IsInHoldingFolder(const std::string& path) {
  const auto folder = parts_.files.RealPath(std::string(FolderOf(path)));
  const auto priorities = AllPriorities();
  return std::any_of(priorities.begin(), priorities.end(), [&](Priority p) {
    return folder == parts_.files.RealPath(parts_.values.HoldingFolder(p.number()));
  });
}

void QueueService::SetFileWriteTime(const std::string& path, LocalTime time) {
  parts_.files.SetLastWriteTime(path, LocalToUtc(time, parts_.clock.UtcOffset()));
}

}  // namespace ostrel
