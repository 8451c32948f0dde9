#include "intake/transmit_queue.h"

#include <algorithm>
#include <fmt/format.h>
#include <unordered_set>
#include <utility>

#include "base/names.h"
#include "base/text.h"
#include "intake/missing_folder.h"
#include "intake/old_files.h"

namespace ostrel {

namespace {

constexpr const char* kCategory = "Pending";
/// A file that is refused again and again must neither take every turn nor fill the log.
constexpr milliseconds kReturnWait{15'000};
constexpr milliseconds kLookInterval{2'000};
/// How long an entry waits for a folder that went away, a volume say. Its record brings it back
/// whenever that happens.
constexpr milliseconds kLongestAbsence{3'600'000};
constexpr int kMostTimesInPart = 3;

}  // namespace

void TransmitQueue::GiveBack() {
  RunStep(parts_.reporting, kCategory, [this] {
    parts_.records.Prepare();
    ClearFolder();
    parts_.handedBack.HandBack([](Priority, const std::string&) { return false; });
    isGivenBack_ = true;
  });
}

/// What an earlier run left there stands in a record, or in the folder that it came from. The only
/// copy of a file, queued on a disk without room for a record, is routed again.
void TransmitQueue::ClearFolder() {
  for (const auto& name : parts_.files.ListFiles(parts_.values.TransmitFolder())) {
    if (parts_.values.ingestPath.empty() || parts_.files.NameCount(PathOf(name)) > 1 ||
        parts_.records.HasCopyOf(PathOf(name))) {
      parts_.files.Delete(PathOf(name));
      continue;
    }
    const auto& ingestPath = parts_.values.ingestPath;
    const auto freeName = FirstFreeName(
        name, [&](const std::string& n) { return parts_.files.Exists(ingestPath + n); });
    RunStep(parts_.reporting, kCategory,
            [&] { parts_.copy.MoveFile(PathOf(name), ingestPath + freeName); });
  }
}

bool TransmitQueue::RestoreFolder() {
  if (!ostrel::RestoreFolder(parts_.files, parts_.reporting, parts_.values.TransmitFolder()))
    return false;
  ForEachWithFile([this](Priority p, Entry& entry) { TryStep([&] { RestoreFile(p, entry); }); });
  return true;
}

void TransmitQueue::ForEachWithFile(const std::function<void(Priority, Entry&)>& call) {
  for (const Priority p : AllPriorities()) {
    for (auto& entry : entries_[p]) {
      if (entry.hasFile) call(p, entry);
    }
  }
  for (auto& held : heldBack_) {
    if (held.entry.hasFile) call(held.p, held.entry);
  }
}

/// Out of the record, which stays.
void TransmitQueue::RestoreFile(Priority p, Entry& entry) {
  if (!entry.record.empty()) parts_.records.Restore(p, entry.record, PathOf(entry.name));
}

std::string TransmitQueue::FreeName(std::string name) const {
  return FirstFreeName(std::move(name),
                       [this](const std::string& n) { return parts_.files.Exists(PathOf(n)); });
}

TransmitQueue::Placed TransmitQueue::Place(const std::string& source, const std::string& name) {
  Placed placed{FreeName(name)};
  try {
    placed.isMoved = parts_.copy.PlaceFile(source, PathOf(placed.name));
  } catch (const Failure&) {
    RestoreFolder();
    throw;
  }
  return placed;
}

void TransmitQueue::TakeBack(const Placed& placed, const std::string& source) {
  if (!IsTakenBack(placed, source)) unqueued_.emplace_back(placed, source);
}

bool TransmitQueue::IsTakenBack(const Placed& placed, const std::string& source) {
  const auto failure = FailureIn([&] {
    if (!placed.isMoved) return parts_.files.Delete(PathOf(placed.name));
    const std::string folder(FolderOf(source));
    const auto name = FirstFreeName(std::string(FileNameOf(source)), [&](const std::string& n) {
      return parts_.files.Exists(JoinPath(folder, n));
    });
    parts_.files.Rename(PathOf(placed.name), JoinPath(folder, name));
  });
  return !failure || failure->IsMissing();
}

void TransmitQueue::Detach(Priority p, const std::string& name) {
  const auto entry = std::ranges::find(entries_[p], name, &Entry::name);
  if (entry == entries_[p].end()) return;
  RunStep(parts_.reporting, kCategory, [&] {
    parts_.copy.Detach(PathOf(name));
    if (!entry->record.empty())
      parts_.records.Keep(PathOf(name), parts_.records.PathOf(p, entry->record));
  });
}

void TransmitQueue::Add(Priority p, const Placed& placed, const std::string& source) {
  Append(p, Recorded(p, placed, source));
}

void TransmitQueue::Replace(Priority p, std::size_t position, const Placed& placed,
                            const std::string& source) {
  auto replaced = std::exchange(entries_[p][position], Recorded(p, placed, source));
  parts_.status.Count(&Counts::replaced);
  parts_.mainFields.PriorityList[p].Replace(position, placed.name);
  End(p, replaced, Fate::kReplaced);
}

TransmitQueue::Entry TransmitQueue::Recorded(Priority p, const Placed& placed,
                                             const std::string& source) {
  const auto& name = placed.name;
  try {
    Entry entry{.name = name, .record = parts_.records.Make(p, name, PathOf(name), source)};
    TryStep([&] { entry.bytes = parts_.files.Status(PathOf(name)).size; });
    entry.since = parts_.clock.Monotonic();
    entry.home = parts_.records.RootId();
    const auto record = entry.record.empty() ? "" : parts_.records.PathOf(p, entry.record);
    entry.product = parts_.history.Enter(p, source, PathOf(name), record);
    return entry;
  } catch (const Failure&) {
    TakeBack(placed, source);
    throw;
  }
}

bool TransmitQueue::MakeRoom(Priority p, std::size_t position) {
  auto& entry = entries_[p][position];
  if (std::exchange(entry.state, State::kGivesWay) == State::kGivesWay) return false;
  DeleteFile(entry);
  return true;
}

std::optional<std::size_t> TransmitQueue::PositionOfProduct(Priority p,
                                                            std::string_view name) const {
  return FindProduct(p, name, IsOnAir(p) ? 1 : 0);
}

bool TransmitQueue::HoldsProduct(Priority p, std::string_view name) const {
  return FindProduct(p, name, 0).has_value();
}

std::optional<std::size_t> TransmitQueue::FindProduct(Priority p, std::string_view name,
                                                      std::size_t first) const {
  const auto& queue = entries_[p];
  for (std::size_t i = first; i < queue.size(); ++i) {
    if (StripExtension(queue[i].name) == StripExtension(name)) return i;
  }
  return std::nullopt;
}

void TransmitQueue::Remove(Priority p, std::vector<std::size_t> positions) {
  auto& queue = entries_[p];
  std::sort(positions.rbegin(), positions.rend());
  positions.erase(std::unique(positions.begin(), positions.end()), positions.end());
  for (const auto position : positions) {
    if (position >= queue.size()) continue;
    if (position == 0 && IsOnAir(p)) return;
    End(p, queue[position], Fate::kRemoved);
    const auto name = std::move(queue[position].name);
    queue.erase(queue.begin() + static_cast<std::ptrdiff_t>(position));
    parts_.mainFields.PriorityList[p].Remove(position);
    parts_.reporting.WriteLog(fmt::format("Priority {}", p.number()), "Removed " + name);
  }
}

std::optional<TransmitQueue::Listed> TransmitQueue::Find(std::string_view name) const {
  std::optional<Listed> other;
  for (const Priority p : AllPriorities()) {
    for (std::size_t position = 0; position < entries_[p].size(); ++position) {
      const auto& entry = entries_[p][position];
      if (ToUpper(entry.name) != ToUpper(name)) continue;
      if (entry.state == State::kWaits && entry.hasFile) return Listed{p, position};
      if (!other) other = Listed{p, position};
    }
  }
  return other;
}

TransmitQueue::Entry& TransmitQueue::Waiting(const Listed& listed) {
  auto& entry = entries_[listed.p][listed.position];
  const auto refuse = [&](const char* why) {
    throw Failure(failure_number::kInvalidArgument, fmt::format("{} {}.", entry.name, why));
  };
  if (entry.state == State::kOnAir) refuse("is on the air");
  if (entry.state == State::kGivesWay) refuse("gives way to a newer file");
  if (!entry.hasFile) refuse("has lost its file");
  return entry;
}

/// The one that is whole whatever happens to the power.
std::string TransmitQueue::FileOf(Priority p, const Entry& entry) const {
  return entry.record.empty() ? PathOf(entry.name) : parts_.records.PathOf(p, entry.record);
}

std::string TransmitQueue::Hold(const Listed& listed) {
  const auto& entry = Waiting(listed);
  const auto held = parts_.held.Take(FileOf(listed.p, entry), listed.p, entry.name);
  parts_.history.Leave(entry.product, held, Fate::kHeld);
  Leave(listed);
  return std::string(FileNameOf(held));
}

void TransmitQueue::Move(const Listed& listed, Priority p) {
  auto& entry = Waiting(listed);
  const auto placed = parts_.handedBack.GiveBack(FileOf(listed.p, entry), p, entry.name);
  entry.product.priority = p.number();
  parts_.history.Leave(entry.product, placed, Fate::kWaiting);
  Leave(listed);
}

/// What became of its record and its history is seen to.
void TransmitQueue::Leave(const Listed& listed) {
  auto& queue = entries_[listed.p];
  DeleteFile(queue[listed.position]);
  queue.erase(queue.begin() + static_cast<std::ptrdiff_t>(listed.position));
  parts_.mainFields.PriorityList[listed.p].Remove(listed.position);
}

void TransmitQueue::PutFirst(const Listed& listed) {
  auto entry = std::move(Waiting(listed));
  auto& queue = entries_[listed.p];
  queue.erase(queue.begin() + static_cast<std::ptrdiff_t>(listed.position));
  const std::size_t place = IsOnAir(listed.p) ? 1 : 0;
  auto& list = parts_.mainFields.PriorityList[listed.p];
  list.Remove(listed.position);
  list.Insert(place, entry.name);
  queue.insert(queue.begin() + static_cast<std::ptrdiff_t>(place), std::move(entry));
}

void TransmitQueue::Purge(UtcTime limit) {
  const auto names = DeleteOlder(parts_.files, parts_.values.TransmitFolder(), limit);
  if (names.empty()) return;
  const std::unordered_set<std::string> deleted(names.begin(), names.end());
  const auto endDeleted = [&](Priority p, Entry& entry) {
    if (!entry.hasFile || !deleted.contains(entry.name)) return;
    entry.hasFile = false;
    parts_.status.Count(&Counts::purged);
    End(p, entry, Fate::kPurged);
  };
  for (const Priority p : AllPriorities()) {
    for (auto& entry : entries_[p]) endDeleted(p, entry);
  }
  for (auto& held : heldBack_) endDeleted(held.p, held.entry);
}

const TransmitQueue::Entry& TransmitQueue::Start(Priority p) {
  auto& entry = entries_[p].front();
  entry.state = State::kOnAir;
  return entry;
}

void TransmitQueue::CountBlock(Priority p, long long n, long long count) {
  auto& entry = entries_[p].front();
  entry.blockCount = count;
  if (entry.blocksSent++ == 0) parts_.history.Begins(entry.product);
  if (n == count) entry.product.lastBlock = parts_.clock.UtcNow();
}

bool TransmitQueue::IsOnAir(std::string_view name) const {
  const auto priorities = AllPriorities();
  return std::any_of(priorities.begin(), priorities.end(),
                     [&](Priority p) { return IsOnAir(p) && entries_[p].front().name == name; });
}

void TransmitQueue::Retire(Priority p) {
  sent_.push_back({p, TakeFirst(p)});
}

void TransmitQueue::RetireInPart(Priority p, const std::string& reason) {
  auto entry = TakeFirst(p);
  if (entry.record.empty()) return End(p, entry, Fate::kIncomplete);
  if (++entry.timesInPart >= kMostTimesInPart) return SetAside(p, std::move(entry), reason);
  parts_.reporting.WriteLog(
      kCategory, fmt::format("{} was sent in part and is queued again: {}", entry.name, reason));
  entry.wasRefused = false;
  entry.hasFile = false;
  entry.blocksSent = 0;
  WaitToReturn(p, std::move(entry));
}

void TransmitQueue::SendAgain(Priority p) {
  auto entry = TakeFirst(p);
  if (entry.record.empty()) return End(p, entry, Fate::kIncomplete);
  parts_.reporting.WriteLog(
      kCategory,
      fmt::format("{} met a file of its name on the air and is sent again.", entry.name));
  entry.wasRefused = false;
  entry.hasFile = false;
  entry.blocksSent = 0;
  if (TryStep([&] { Recover(p, entry); })) return ListAgain(p, std::move(entry));
  WaitToReturn(p, std::move(entry));
}

/// Its file comes back out of its record, under a name that is free by now.
void TransmitQueue::Recover(Priority p, Entry& entry) {
  const auto name = FreeName(entry.name);
  parts_.records.Restore(p, entry.record, PathOf(name));
  entry.name = name;
  entry.product.sentAs = name;
  entry.hasFile = true;
}

/// It was read often enough in vain.
void TransmitQueue::SetAside(Priority p, Entry entry, const std::string& reason) {
  try {
    parts_.quarantine.TakeEntry(parts_.records.PathOf(p, entry.record), p, entry.name, reason);
    parts_.history.End(entry.product, Fate::kSetAside);
    parts_.reporting.WriteLog(
        kCategory, fmt::format("{} was sent in part {} times and is set aside: {}", entry.name,
                               kMostTimesInPart, reason));
  } catch (const Failure&) {
    WaitToReturn(p, std::move(entry));
  }
}

bool TransmitQueue::HoldBack(Priority p) {
  auto entry = TakeFirst(p);
  if (!MayComeBack(entry)) {
    End(p, entry, Fate::kGone);
    return false;
  }
  entry.wasRefused = true;
  WaitToReturn(p, std::move(entry));
  return true;
}

/// A file that cannot be looked at is not gone, nor is one whose whole folder is away.
bool TransmitQueue::MayComeBack(const Entry& entry) {
  bool isGone = !entry.hasFile;
  if (!isGone) TryStep([&] { isGone = !parts_.files.Exists(PathOf(entry.name)); });
  if (!isGone) return true;
  LookThrough();
  const bool isAway = !entry.record.empty() && entry.home != parts_.records.RootId();
  return isAway && parts_.clock.Monotonic() - entry.since < kLongestAbsence;
}

void TransmitQueue::WaitToReturn(Priority p, Entry entry) {
  if (IsOverwritten(p)) EndHeldBack(p, StripExtension(entry.name));
  heldBack_.push_back({p, std::move(entry), parts_.clock.Monotonic() + kReturnWait});
}

bool TransmitQueue::HoldsBackProduct(std::string_view name) const {
  return std::any_of(heldBack_.begin(), heldBack_.end(), [&](const Unlisted& held) {
    return StripExtension(held.entry.name) == StripExtension(name);
  });
}

void TransmitQueue::EndHeldBack(Priority p, std::string_view product) {
  std::erase_if(heldBack_, [&](Unlisted& held) {
    const bool isOlder = held.p == p && StripExtension(held.entry.name) == product;
    if (isOlder) End(p, held.entry, Fate::kReplaced);
    return isOlder;
  });
}

void TransmitQueue::ReleaseSent() {
  for (auto& sent : sent_) End(sent.p, sent.entry, FateOfRetired(sent.entry));
  sent_.clear();
}

Fate TransmitQueue::FateOfRetired(const Entry& entry) {
  if (entry.blocksSent == 0 && !entry.isStopped)
    return entry.bytes == 0 ? Fate::kEmpty : Fate::kGone;
  if (entry.blocksSent == entry.blockCount) return Fate::kSent;
  return entry.isStopped ? Fate::kStopped : Fate::kIncomplete;
}

void TransmitQueue::ListHeldBack() {
  const auto now = parts_.clock.Monotonic();
  if (now >= nextLook_) {
    nextLook_ = now + kLookInterval;
    parts_.records.RetryDrops();
    std::erase_if(unqueued_,
                  [this](const auto& pair) { return IsTakenBack(pair.first, pair.second); });
    LookThrough();
  }
  while (!heldBack_.empty() && heldBack_.front().returnAt <= now) {
    auto held = std::move(heldBack_.front());
    heldBack_.pop_front();
    if (!held.entry.hasFile && !TryStep([&] { Recover(held.p, held.entry); }))
      WaitToReturn(held.p, std::move(held.entry));
    else
      ListAgain(held.p, std::move(held.entry));
  }
}

/// A folder of records that went away and came back holds what a start would find there; so does
/// one that the start could not look at, which it reported.
void TransmitQueue::LookThrough() {
  const auto handBack = [this] {
    parts_.handedBack.HandBack(
        [this](Priority p, const std::string& record) { return HoldsRecord(p, record); });
  };
  if (!isGivenBack_)
    isGivenBack_ = TryStep([&] {
      parts_.records.Prepare();
      handBack();
    });
  else if (parts_.records.WasReplaced())
    RunStep(parts_.reporting, kCategory, handBack);
}

bool TransmitQueue::HoldsRecord(Priority p, const std::string& record) const {
  const auto holds = [&](const Entry& entry) {
    return entry.record == record && entry.home == parts_.records.RootId();
  };
  const auto isHeld = [&](const Unlisted& unlisted) {
    return unlisted.p == p && holds(unlisted.entry);
  };
  return std::ranges::any_of(entries_[p], holds) || std::ranges::any_of(sent_, isHeld) ||
         std::ranges::any_of(heldBack_, isHeld);
}

/// What is listed of the product by now is newer.
void TransmitQueue::ListAgain(Priority p, Entry entry) {
  if (!entry.hasFile || (IsOverwritten(p) && HoldsProduct(p, entry.name)))
    return End(p, entry, Fate::kReplaced);
  Append(p, std::move(entry));
}

void TransmitQueue::Append(Priority p, Entry entry) {
  const auto name = entry.name;
  entries_[p].push_back(std::move(entry));
  parts_.mainFields.PriorityList[p].Append(name);
}

TransmitQueue::Entry TransmitQueue::TakeFirst(Priority p) {
  auto entry = std::move(entries_[p].front());
  entry.state = State::kWaits;
  entries_[p].pop_front();
  parts_.mainFields.PriorityList[p].Remove(0);
  return entry;
}

void TransmitQueue::DeleteFile(Entry& entry) {
  if (std::exchange(entry.hasFile, false))
    TryStep([&] { parts_.files.Delete(PathOf(entry.name)); });
}

void TransmitQueue::End(Priority p, Entry& entry, Fate fate) {
  if (fate == Fate::kSent && !parts_.history.IsFill(entry.name)) ++parts_.status.sentSinceStart;
  parts_.history.End(entry.product, fate);
  DeleteFile(entry);
  if (!entry.record.empty()) parts_.records.Drop(p, std::exchange(entry.record, {}));
}

}  // namespace ostrel
