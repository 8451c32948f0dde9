#include "feed/delivery.h"

#include <QUuid>
#include <filesystem>
#include <fmt/format.h>

#include "base/failure.h"
#include "base/names.h"
#include "feed/content_hash.h"
#include "feed/placing.h"

namespace ostrel {
namespace {

using std::chrono::hours;

constexpr std::size_t kMostUnknown = 10'000, kMostToPublish = 10'000;
constexpr hours kMarksStay{24 * 30};

/// A name in the outbox: a number that no other product has, and the product's own.
std::string OutboxName(const std::string& name) {
  return QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString() + "_" + name;
}

/// True for a file that is not there any more, and for what never was a file.
bool IsGone(const std::string& key) {
  std::error_code error;
  return !key.starts_with('/') || !std::filesystem::exists(key, error);
}

}  // namespace

void Delivery::Finish() {
  const std::lock_guard lock(mutex_);
  unplaced_ = parts_.memory.LastPlacements();
  for (const auto& folder : {parts_.ingestFolder(), parts_.unknownFolder, parts_.outbox}) {
    if (!folder.empty()) RemoveLeftovers(folder, unplaced_);
  }
  PlaceAll();
}

void Delivery::TellOfOutbox(std::function<void()> tell) {
  const std::lock_guard lock(mutex_);
  tellOfOutbox_ = std::move(tell);
}

bool Delivery::IsTaken(const Mark& mark) {
  const std::lock_guard lock(mutex_);
  return parts_.memory.IsTaken(mark);
}

void Delivery::Leave(const Mark& mark) {
  const std::lock_guard lock(mutex_);
  parts_.memory.RecordMark(mark, parts_.now());
}

FeedOutcome Delivery::Take(std::size_t source, const FeedProduct& product) {
  const std::lock_guard lock(mutex_);
  try {
    PlaceAll();
    const auto outcome = TakeUnheard(source, product);
    parts_.book.SetTrouble("");
    KeepBounds();
    return outcome;
  } catch (const Failure& failure) {
    parts_.book.SetTrouble(failure.text());
    throw;
  }
}

FeedOutcome Delivery::TakeUnheard(std::size_t source, const FeedProduct& product) {
  const auto known = rules_.NameOf(product.given);
  const auto name = known ? known->name : HarmlessName(product.given);
  const int urgency = known ? known->urgency : 0;
  const auto hash = HashOf(product.content);
  const auto now = parts_.now();
  auto outcome = known ? FeedOutcome::kDelivered : FeedOutcome::kUnknown;
  if (parts_.memory.IsRepeat(name, hash, now, parts_.repeats)) {
    parts_.memory.RecordMark(product.mark, now);
    outcome = FeedOutcome::kRepeat;
  } else {
    auto placements = known ? Lay(product, name)
                            : std::vector{WriteHidden(parts_.unknownFolder, name, product.content)};
    parts_.memory.Record(name, hash, product.mark, now, placements);
    unplaced_ = std::move(placements);
    PlaceAll();
  }
  parts_.book.Note(source, product.given, name, urgency, outcome);
  return outcome;
}

/// The files of a known product, hidden yet: for the station, and for the broker.
std::vector<Placement> Delivery::Lay(const FeedProduct& product, const std::string& name) const {
  std::vector<Placement> placements;
  if (const auto folder = parts_.ingestFolder(); !folder.empty())
    placements.push_back(WriteHidden(folder, name, product.content));
  if (product.isPublished && !parts_.outbox.empty())
    placements.push_back(WriteHidden(parts_.outbox, OutboxName(name), product.content));
  return placements;
}

void Delivery::PlaceAll() {
  while (!unplaced_.empty()) {
    const auto path = Place(unplaced_.front());
    const bool isForBroker = FolderOf(path) == parts_.outbox;
    unplaced_.erase(unplaced_.begin());
    if (isForBroker) tellOfOutbox_();
  }
}

/// Once an hour: what is too old to be asked for is forgotten, and nothing that waits for a hand or
/// a broker fills the disk.
void Delivery::KeepBounds() {
  const auto now = parts_.now();
  if (std::chrono::abs(now - lastBounds_) < hours(1)) return;
  lastBounds_ = now;
  parts_.memory.Forget(now - parts_.repeats, now - kMarksStay, IsGone);
  const std::pair<std::string, std::size_t> bounds[] = {{parts_.unknownFolder, kMostUnknown},
                                                        {parts_.outbox, kMostToPublish}};
  for (const auto& [folder, most] : bounds) {
    const auto gone = folder.empty() ? 0 : KeepNewest(folder, most);
    if (gone > 0) parts_.book.Log(fmt::format("{}: the oldest {} files are gone", folder, gone));
  }
}

}  // namespace ostrel
