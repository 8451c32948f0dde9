#include "intake/product_history.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/names.h"
#include "base/text.h"

namespace ostrel {

namespace {

constexpr const char* kCategory = "History";

std::string ProductOf(std::string_view name) {
  return ToUpper(StripExtension(name));
}

}  // namespace

void ProductHistory::Begin() {
  const auto& values = parts_.values;
  isOn_ = false;
  places_.clear();
  strayed_.clear();
  if (values.historyDays <= 0) return;
  const auto failure = FailureIn([&] {
    auto earlier = parts_.store.Begin({.rows = std::chrono::days(values.historyDays),
                                       .products = std::chrono::days(values.keptDays),
                                       .now = parts_.clock.UtcNow()});
    lastId_ = earlier.lastId;
    for (auto& row : earlier.open) {
      if (row.place.empty())
        strayed_.push_back(std::move(row));
      else
        places_[row.place] = std::move(row);
    }
    isOn_ = true;
  });
  TellNews();
  if (!failure) return;
  parts_.status.historyTrouble =
      fmt::format("{}. Nothing is written of this run.", failure->text());
  parts_.reporting.WriteLog(kCategory, parts_.status.historyTrouble);
}

void ProductHistory::TellNews() {
  while (const auto news = parts_.store.TakeNews()) {
    parts_.reporting.WriteLog(kCategory, news->text);
    if (news->kind == HistoryNews::Kind::kBegunAnew) begunAnew_ = news->text;
    const bool works = news->kind == HistoryNews::Kind::kWorksAgain;
    parts_.status.historyTrouble = works ? begunAnew_ : news->text;
  }
}

void ProductHistory::Settle() {
  if (!isOn_) return;
  std::erase_if(places_, [this](auto& placed) {
    if (parts_.files.Exists(JoinPath(parts_.values.dataRoot, placed.first))) return false;
    strayed_.push_back(std::move(placed.second));
    return true;
  });
  if (strayed_.empty()) return;
  std::ranges::sort(strayed_, {}, &ProductRow::id);
  // A folder that cannot be listed costs its rows their ends, and the station nothing.
  const auto adopt = [this](const std::string& folder, int priority) {
    RunStep(parts_.reporting, kCategory, [&] { Adopt(folder, priority); });
  };
  adopt(parts_.values.HoldingFolder(kCompressFolder), 0);
  for (const Priority p : AllPriorities()) {
    adopt(parts_.values.HoldingFolder(p.number()), p.number());
    adopt(parts_.values.HeldFolder(p), p.number());
  }
  for (auto& row : strayed_) End(row, Fate::kUnknown);
  strayed_.clear();
}

/// The files of `folder` that no row knows take the rows of their products, the oldest first.
void ProductHistory::Adopt(const std::string& folder, int priority) {
  for (const auto& name : parts_.files.ListFiles(folder)) {
    const auto place = InDataRoot(JoinPath(folder, name));
    if (places_.contains(place)) continue;
    const auto stray = std::ranges::find_if(strayed_, [&](const ProductRow& row) {
      return row.priority == priority && ProductOf(row.name) == ProductOf(name);
    });
    if (stray == strayed_.end()) continue;
    stray->place = place;
    Put(*stray);
    places_[place] = std::move(*stray);
    strayed_.erase(stray);
  }
}

void ProductHistory::End() {
  if (std::exchange(isOn_, false)) parts_.store.End();
}

ProductRow ProductHistory::NewRow(const std::string& name) {
  ProductRow row;
  if (!isOn_) return row;
  row.id = ++lastId_;
  row.name = ToUpper(name);
  row.arrived = parts_.clock.UtcNow();
  return row;
}

ProductHistory::Arrival ProductHistory::Receive(const std::string& path, const std::string& name) {
  if (!isOn_) return {};
  return {NewRow(name), parts_.store.Open(path)};
}

void ProductHistory::Place(Arrival arrival, int folder, const std::string& path) {
  if (arrival.row.id == 0) return;
  arrival.row.priority = folder == kCompressFolder ? 0 : folder;
  arrival.row.place = InDataRoot(path);
  Put(arrival.row, std::move(arrival.content));
  places_[arrival.row.place] = std::move(arrival.row);
}

void ProductHistory::End(Arrival arrival, Fate fate) {
  arrival.row.fate = fate;
  arrival.row.ended = parts_.clock.UtcNow();
  Put(arrival.row, std::move(arrival.content));
}

void ProductHistory::Move(const std::string& from, const std::string& to) {
  auto moved = places_.extract(InDataRoot(from));
  if (moved.empty()) return;
  moved.key() = InDataRoot(to);
  moved.mapped().place = moved.key();
  Put(moved.mapped());
  places_.insert(std::move(moved));
}

void ProductHistory::EndAt(const std::string& path, Fate fate, std::int64_t archive) {
  auto ended = places_.extract(InDataRoot(path));
  if (ended.empty()) return;
  ended.mapped().archive = archive;
  End(ended.mapped(), fate);
}

void ProductHistory::SetAside(const std::string& from, const std::string& to,
                              const std::string& name) {
  if (places_.contains(InDataRoot(from))) return EndAt(from, Fate::kSetAside);
  if (!IsFill(name)) End(Receive(to, name), Fate::kSetAside);
}

ProductRow ProductHistory::Enter(Priority p, const std::string& source, const std::string& file,
                                 const std::string& record) {
  Arrival arrival;
  if (auto placed = places_.extract(InDataRoot(source)); !placed.empty()) {
    arrival.row = std::move(placed.mapped());
  } else if (isOn_ && !IsFill(source)) {
    arrival = Receive(source, std::string(FileNameOf(source)));
    if (!arrival.content) arrival.content = parts_.store.Open(file);
  }
  auto& row = arrival.row;
  row.priority = p.number();
  row.sentAs = FileNameOf(file);
  row.place = record.empty() ? std::string() : InDataRoot(record);
  row.fate = Fate::kWaiting;
  Put(row, std::move(arrival.content));
  return std::move(row);
}

/// Where the schedule or an operator lays a file of its name, that counts as a fill, too.
bool ProductHistory::IsFill(std::string_view file) const {
  const auto fill = ToUpper(FileNameOf(parts_.setup.NameAs.Get()));
  return StripDupSuffix(ToUpper(FileNameOf(file))) == StripDupSuffix(fill);
}

void ProductHistory::Leave(ProductRow row, const std::string& path, Fate fate) {
  if (row.id == 0) return;
  row.fate = fate;
  row.place = InDataRoot(path);
  Put(row);
  places_[row.place] = std::move(row);
}

void ProductHistory::Repeat(Priority p, const std::string& name, std::int64_t resendOf,
                            const std::string& path) {
  auto arrival = Receive(path, name);
  arrival.row.resendOf = resendOf;
  Place(std::move(arrival), p.number(), path);
}

void ProductHistory::Begins(ProductRow& row) {
  row.fate = Fate::kOnAir;
  row.firstBlock = parts_.clock.UtcNow();
  row.lastBlock.reset();
  Put(row);
}

void ProductHistory::End(ProductRow& row, Fate fate) {
  if (row.id == 0 || row.ended) return;
  if (fate == Fate::kSent) ++row.timesSent;
  row.fate = fate;
  row.place.clear();
  row.ended = parts_.clock.UtcNow();
  Put(row);
}

void ProductHistory::Put(const ProductRow& row, std::unique_ptr<ProductContent> content) {
  if (row.id == 0 || !isOn_) return;
  parts_.store.Put(row, std::move(content));
  TellNews();
}

std::string ProductHistory::InDataRoot(const std::string& path) const {
  return parts_.values.InDataRoot(path);
}

}  // namespace ostrel
