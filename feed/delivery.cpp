#include "feed/delivery.h"

#include <QUuid>
#include <filesystem>
#include <fmt/format.h>

#include "base/failure.h"
#include "base/names.h"
#include "base/reporting.h"
#include "feed/content_hash.h"
#include "feed/placing.h"

namespace ostrel {
namespace {

using std::chrono::hours;

constexpr std::size_t kMostApart = 10'000, kMostToPublish = 10'000;
constexpr std::uintmax_t kMostBytesApart = 256 << 20, kMostBytesToPublish = 1 << 30;
constexpr hours kMarksStay{24 * 30};

/// A name in the outbox: a number that no other product has, and the product's own.
std::string OutboxName(const std::string& name) {
  return QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString() + "_" + name;
}

/// True for a file that is not there any more, and for what never was a file. Where its folder is
/// not there either, a share may be away.
bool IsGone(const std::string& key) {
  std::error_code error;
  const bool isThere = std::filesystem::exists(key, error);
  return !key.starts_with('/') ||
         (!isThere && !error && std::filesystem::exists(FolderOf(key), error));
}

}  // namespace

void Delivery::GoOn() {
  const std::lock_guard lock(mutex_);
  if (isLastRunFinished_ && unplaced_.empty()) return;
  try {
    FinishLastRun();
    PlaceAll();
    parts_.book.SetTrouble("");
  } catch (const std::exception& error) {
    parts_.book.SetTrouble(error.what());
  }
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

/// What was recorded before is placed before, so that no record is written over that is still
/// needed. What is recorded is taken: it is placed when it can be.
template <typename Step>
FeedOutcome Delivery::TakeInTurn(std::string_view content, Step&& step) {
  const std::lock_guard lock(mutex_);
  FeedOutcome outcome = FeedOutcome::kRepeat;
  try {
    FinishLastRun();
    PlaceAll();
    outcome = step();
  } catch (const std::exception& error) {
    parts_.book.SetTrouble(error.what());
    throw AsFailure(error);
  }
  Settle(content);
  return outcome;
}

FeedOutcome Delivery::Take(std::size_t source, const FeedProduct& product) {
  return TakeInTurn(product.content, [&] {
    if (product.content.empty()) {
      parts_.book.Log(fmt::format("{} is empty and is dropped", product.given));
      parts_.memory.RecordMark(product.mark, parts_.now());
      return FeedOutcome::kRepeat;
    }
    return product.content.size() > parts_.largest ? TakeLarge(source, product)
                                                   : TakeUnheard(source, product);
  });
}

FeedOutcome Delivery::TakeApart(std::size_t source, ApartProduct& product, const Mark& mark) {
  return TakeInTurn({}, [&] { return EndApart(source, product, mark); });
}

Delivery::Arrival Delivery::Identify(std::size_t source, std::string_view given, Mark mark) const {
  const auto known = rules_.NameOf(given);
  return {.source = source,
          .given = given,
          .mark = std::move(mark),
          .name = known ? known->name : HarmlessName(given),
          .urgency = known ? known->urgency : 0,
          .outcome = known ? FeedOutcome::kDelivered : FeedOutcome::kUnknown};
}

FeedOutcome Delivery::TakeUnheard(std::size_t source, const FeedProduct& product) {
  auto arrival = Identify(source, product.given, product.mark);
  arrival.hash = HashOf(product.content);
  if (DropRepeat(arrival)) return arrival.outcome;
  if (PassOver(arrival, product.content)) return Record(arrival, {});
  const auto files = arrival.outcome == FeedOutcome::kDelivered ? Lay(product, arrival.name)
                                                                : LayApart(product, arrival.name);
  std::vector<HiddenFile*> laid;
  for (const auto& file : files) laid.push_back(file.get());
  return Record(arrival, laid);
}

bool Delivery::DropRepeat(Arrival& arrival) {
  const auto now = parts_.now();
  if (!parts_.memory.IsRepeat(arrival.name, arrival.hash, now, parts_.repeats)) return false;
  parts_.memory.RecordMark(arrival.mark, now);
  arrival.outcome = FeedOutcome::kRepeat;
  parts_.book.Note(arrival.source, arrival.given, arrival.name, arrival.urgency, arrival.outcome);
  return true;
}

bool Delivery::PassOver(Arrival& arrival, std::string_view content) const {
  if (parts_.areas == nullptr || arrival.outcome != FeedOutcome::kDelivered) return false;
  const auto* const rule = parts_.areas->PassedOverBy(content, parts_.now());
  if (rule == nullptr) return false;
  arrival.outcome = FeedOutcome::kPassedOver;
  arrival.rule = Spell(*rule);
  return true;
}

FeedOutcome Delivery::Record(const Arrival& arrival, const std::vector<HiddenFile*>& files) {
  std::vector<Placement> placements;
  placements.reserve(files.size());
  for (const auto* const file : files) placements.push_back(file->placement());
  parts_.memory.Record(arrival.name, arrival.hash, arrival.mark, parts_.now(), placements);
  for (auto* const file : files) file->Release();
  unplaced_ = std::move(placements);
  parts_.book.Note(arrival.source, arrival.given, arrival.name, arrival.urgency, arrival.outcome,
                   arrival.rule);
  return arrival.outcome;
}

/// The files of a known product, hidden yet: for the station, and for the broker.
Delivery::HiddenFiles Delivery::Lay(const FeedProduct& product, const std::string& name) const {
  HiddenFiles files;
  if (product.isPublished && !parts_.outbox.empty())
    files.push_back(WriteHidden(parts_.outbox, OutboxName(name), product.content));
  if (const auto folder = parts_.ingestFolder(); !folder.empty())
    files.push_back(WriteHidden(folder, name, product.content));
  return files;
}

/// The file of an unknown product. What cannot be kept is given up: no warning waits for it.
Delivery::HiddenFiles Delivery::LayApart(const FeedProduct& product,
                                         const std::string& name) const {
  HiddenFiles files;
  try {
    KeepNewest(parts_.unknownFolder, kMostApart, kMostBytesApart - product.content.size());
    files.push_back(WriteHidden(parts_.unknownFolder, name, product.content));
  } catch (const Failure& failure) {
    parts_.book.Log(fmt::format("{} cannot be kept: {}", name, failure.text()));
  }
  return files;
}

std::unique_ptr<ApartProduct> Delivery::BeginApart(const std::string& given, std::uintmax_t bytes) {
  const std::lock_guard lock(mutex_);
  FinishLastRun();  // which would take the hidden file for a leftover
  return MakeApart(given, bytes);
}

std::unique_ptr<ApartProduct> Delivery::MakeApart(const std::string& given, std::uintmax_t bytes) {
  const auto taken = apartBytes_ += bytes;
  const std::shared_ptr<const void> room(nullptr, [=, this](const void*) { apartBytes_ -= bytes; });
  if (taken > kMostBytesApart) {
    throw Failure(bytes > kMostBytesApart ? failure_number::kOverflow : failure_number::kDiskFull,
                  fmt::format("there is no room for {} bytes among what is kept apart", bytes));
  }
  KeepNewest(parts_.unknownFolder, kMostApart, kMostBytesApart - taken);
  const auto name = Identify(0, given, {}).name;
  return std::make_unique<ApartProduct>(given, parts_.unknownFolder, name, room);
}

/// One that is in memory already. As with an unknown one, no warning waits for it.
FeedOutcome Delivery::TakeLarge(std::size_t source, const FeedProduct& product) {
  std::unique_ptr<ApartProduct> apart;
  try {
    apart = MakeApart(product.given, product.content.size());
    apart->Write(product.content);
  } catch (const Failure& failure) {
    parts_.book.Log(
        fmt::format("{} is too large, and cannot be kept: {}", product.given, failure.text()));
    parts_.memory.RecordMark(product.mark, parts_.now());
    return FeedOutcome::kTooLarge;
  }
  return EndApart(source, *apart, product.mark);
}

FeedOutcome Delivery::EndApart(std::size_t source, ApartProduct& product, const Mark& mark) {
  product.file().Flush();
  auto arrival = Identify(source, product.given(), mark);
  arrival.outcome = FeedOutcome::kTooLarge;
  arrival.hash = product.Hash();
  return DropRepeat(arrival) ? arrival.outcome : Record(arrival, {&product.file()});
}

/// The database has what was to be placed when the last run ended; the rest that lies hidden is
/// nobody's.
void Delivery::FinishLastRun() {
  if (isLastRunFinished_) return;
  auto last = parts_.memory.LastPlacements();
  for (const auto& folder : {parts_.ingestFolder(), parts_.unknownFolder, parts_.outbox}) {
    if (!folder.empty()) RemoveLeftovers(folder, last);
  }
  unplaced_ = std::move(last);
  isLastRunFinished_ = true;
}

void Delivery::PlaceAll() {
  while (!unplaced_.empty()) {
    auto& placement = unplaced_.front();
    const auto path = Place(placement);
    if (path.empty() && !unplacedContent_.empty()) {  // its disk went away, and another came
      const auto again = WriteHidden(std::string(FolderOf(placement.path)),
                                     std::string(FileNameOf(placement.path)), unplacedContent_);
      again->Release();
      placement = again->placement();
      continue;
    }
    const bool isForBroker = FolderOf(path) == parts_.outbox;
    unplaced_.erase(unplaced_.begin());
    if (isForBroker) tellOfOutbox_();
  }
  unplacedContent_.clear();
}

void Delivery::Settle(std::string_view content) {
  try {
    PlaceAll();
    parts_.book.SetTrouble("");
  } catch (const std::exception& error) {
    parts_.book.SetTrouble(error.what());
    unplacedContent_ = content;
    return;
  }
  try {
    KeepBounds();
  } catch (const std::exception& error) {
    parts_.book.Log(fmt::format("What is old stays: {}", error.what()));
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
