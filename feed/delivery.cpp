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
constexpr std::uintmax_t kMostUnknownBytes = 256 << 20, kMostBytesToPublish = 1 << 30;
constexpr hours kMarksStay{24 * 30};

/// A name in the outbox: a number that no other product has, and the product's own.
std::string OutboxName(const std::string& name) {
  return QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString() + "_" + name;
}

/// True for a file that is not there any more, and for what never was a file. Where its folder is
/// not there either, a share may be away.
bool IsGone(const std::string& key) {
  std::error_code error;
  return !key.starts_with('/') ||
         (!std::filesystem::exists(key, error) && std::filesystem::exists(FolderOf(key), error));
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
    if (product.content.empty()) {
      parts_.book.Log(fmt::format("{} is empty and is dropped", product.given));
      parts_.memory.RecordMark(product.mark, parts_.now());
      return FeedOutcome::kRepeat;
    }
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
    auto placements = known ? Lay(product, name) : LayApart(product, name);
    try {
      parts_.memory.Record(name, hash, product.mark, now, placements);
    } catch (const Failure&) {
      for (const auto& placement : placements) std::filesystem::remove(placement.hidden);
      throw;
    }
    unplaced_ = std::move(placements);
    PlaceAll();
  }
  parts_.book.Note(source, product.given, name, urgency, outcome);
  return outcome;
}

/// The files of a known product, hidden yet: for the station, and for the broker.
std::vector<Placement> Delivery::Lay(const FeedProduct& product, const std::string& name) const {
  std::vector<Placement> placements;
  if (product.isPublished && !parts_.outbox.empty())
    placements.push_back(WriteHidden(parts_.outbox, OutboxName(name), product.content));
  try {
    if (const auto folder = parts_.ingestFolder(); !folder.empty())
      placements.push_back(WriteHidden(folder, name, product.content));
  } catch (const Failure&) {
    for (const auto& placement : placements) std::filesystem::remove(placement.hidden);
    throw;
  }
  return placements;
}

/// The file of an unknown product. What cannot be kept is given up: no warning waits for it.
std::vector<Placement> Delivery::LayApart(const FeedProduct& product,
                                          const std::string& name) const {
  try {
    KeepNewest(parts_.unknownFolder, kMostUnknown, kMostUnknownBytes - product.content.size());
    return {WriteHidden(parts_.unknownFolder, name, product.content)};
  } catch (const Failure& failure) {
    parts_.book.Log(fmt::format("{} cannot be kept: {}", name, failure.text()));
    return {};
  }
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
  const auto gone =
      parts_.outbox.empty() ? 0 : KeepNewest(parts_.outbox, kMostToPublish, kMostBytesToPublish);
  if (gone > 0)
    parts_.book.Log(
        fmt::format("The broker never took the oldest {} products; they are gone", gone));
}

}  // namespace ostrel
