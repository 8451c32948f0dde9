#include "programs/queue/past_products.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <limits>
#include <zlib.h>

#include "base/failure.h"
#include "base/names.h"
#include "base/station_files.h"
#include "base/text.h"
#include "intake/match_pattern.h"

namespace ostrel {

namespace {

constexpr auto kEver = std::numeric_limits<std::int64_t>::max();
constexpr const char* kSelect =
    "SELECT id, name, sent_as, priority, size, hash, arrived, first_block, last_block, ended, "
    "times_sent, fate, archive, resend_of FROM product ";

const std::string& Existing(const std::string& path) {
  if (!std::filesystem::exists(path))
    throw Failure(failure_number::kFileNotFound, fmt::format("There is no {}.", path));
  return path;
}

std::optional<std::int64_t> NumberIn(const SqliteStatement& row, int column) {
  if (row.IsNothing(column)) return std::nullopt;
  return row.Number(column);
}

/// Damage can make any number of one, and not every number has a date.
UtcTime MomentIn(const SqliteStatement& row, int column) {
  constexpr std::int64_t kLast = 253'402'300'799'000;  // of the year 9999
  return UtcTime(milliseconds(std::clamp<std::int64_t>(row.Number(column), 0, kLast)));
}

std::optional<UtcTime> TimeIn(const SqliteStatement& row, int column) {
  if (row.IsNothing(column)) return std::nullopt;
  return MomentIn(row, column);
}

PastProduct ProductIn(const SqliteStatement& row) {
  PastProduct product;
  product.id = row.Number(0);
  product.name = row.Text(1);
  product.sentAs = row.Text(2);
  product.priority = NumberIn(row, 3);
  product.size = NumberIn(row, 4);
  product.hash = row.Text(5);
  product.arrived = MomentIn(row, 6);
  product.firstBlock = TimeIn(row, 7);
  product.lastBlock = TimeIn(row, 8);
  product.ended = TimeIn(row, 9);
  product.timesSent = row.Number(10);
  product.fate = row.Text(11);
  product.archive = NumberIn(row, 12);
  product.resendOf = NumberIn(row, 13);
  return product;
}

/// Calls `take` with the row at `from` and those behind it, part by part, as far as they can be
/// read. Returns where damage hides what follows; nothing at the end. While `take` is called,
/// nobody is kept from writing.
template <typename Take>
std::optional<std::int64_t> ReadUntilDamage(const SqliteDatabase& database, std::int64_t from,
                                            const Take& take) {
  for (;;) {
    std::vector<PastProduct> part;
    bool isDamaged = false;
    std::int64_t count = 0;
    {
      SqliteStatement select(
          database,
          (kSelect + std::string("NOT INDEXED WHERE id >= ?1 ORDER BY id LIMIT ?2")).c_str());
      select.Bind(from).Bind(std::int64_t{PastProducts::kPart});
      try {
        for (; select.Step(); ++count) {
          part.push_back(ProductIn(select));
          from = part.back().id + 1;
        }
      } catch (const DamagedDatabase&) {
        isDamaged = true;
      }
    }
    take(std::move(part));
    if (isDamaged) return from;
    if (count < PastProducts::kPart) return std::nullopt;
  }
}

/// The first id from `damage` on that can be read, looked for further and further on.
std::int64_t NextReadable(const SqliteDatabase& database, std::int64_t damage) {
  constexpr std::int64_t kFurthest = std::int64_t{1} << 40;
  for (std::int64_t gap = 0; gap < kFurthest && damage < kEver - gap; gap = 2 * gap + 1) {
    SqliteStatement next(database, "SELECT min(id) FROM product NOT INDEXED WHERE id >= ?1");
    next.Bind(damage + gap);
    try {
      next.Step();
      return next.IsNothing(0) ? kEver : next.Number(0);
    } catch (const DamagedDatabase&) {
      // Not yet.
    }
  }
  return kEver;
}

/// Where what can be read behind `damage` begins: back from a place that can be read. kEver when
/// nothing follows.
std::int64_t EndOf(const SqliteDatabase& database, std::int64_t damage) {
  std::int64_t first = NextReadable(database, damage);
  SqliteStatement select(
      database,
      (kSelect + std::string("NOT INDEXED WHERE id > ?1 AND id <= ?2 ORDER BY id DESC")).c_str());
  select.Bind(damage).Bind(first);
  try {
    while (select.Step()) first = ProductIn(select).id;
  } catch (const DamagedDatabase&) {
    // Here it is.
  }
  return first;
}

/// The first id of those that had not ended at `since`, or one before it.
std::int64_t FirstSince(const SqliteDatabase& database, UtcTime since) {
  // By the index of ends: an aggregate of the id itself would look through the rows.
  SqliteStatement first(
      database, "SELECT ifnull(min(+id), ?2) FROM product WHERE ended IS NULL OR ended >= ?1");
  first.Bind(since.time_since_epoch().count()).Bind(kEver);
  try {
    first.Step();
    return first.Number(0);
  } catch (const DamagedDatabase&) {
    return 0;
  }
}

bool IsMeant(const PastProduct& product, const PastFilter& filter, const std::string& pattern) {
  const bool wasOnItsWay = (!filter.until || product.arrived < *filter.until) &&
                           (!filter.since || !product.ended || *product.ended >= *filter.since);
  return wasOnItsWay && (pattern.empty() || MatchPattern(product.name, pattern) ||
                         MatchPattern(product.sentAs, pattern));
}

}  // namespace

bool IsNumber(const std::string& text) {
  return !text.empty() && text.size() < 18 &&
         text.find_first_not_of("0123456789") == std::string::npos;
}

std::string HistoryPath(const std::string& folder) {
  return JoinPath(folder, kHistoryFile);
}

PastProducts::PastProducts(const std::string& path)
    : database_(Existing(path), "History", DatabaseUse::kReadOnly) {
  database_.Execute("PRAGMA busy_timeout = 5000");
  database_.Execute("PRAGMA writable_schema = ON");  // reads one that was cut off as far as it goes
}

int PastProducts::Find(const PastFilter& filter, const Take& take) const {
  const auto pattern = ToUpper(filter.pattern);
  const auto takeMeant = [&](std::vector<PastProduct> part) {
    std::erase_if(part, [&](const auto& one) { return !IsMeant(one, filter, pattern); });
    if (!part.empty()) take(part);
  };
  int holes = 0;
  std::int64_t from = filter.since ? FirstSince(database_, *filter.since) : 0;
  while (const auto damage = ReadUntilDamage(database_, from, takeMeant)) {
    ++holes;
    from = EndOf(database_, *damage);
    if (from == kEver) break;
  }
  return holes;
}

std::optional<PastProduct> PastProducts::FindOne(const std::string& numberOrName) const {
  const std::string where =
      IsNumber(numberOrName)
          ? "WHERE id = CAST(?1 AS INTEGER)"
          : "WHERE name = ?1 OR sent_as = ?1 ORDER BY first_block IS NULL, first_block DESC, "
            "arrived DESC LIMIT 1";
  SqliteStatement select(database_, (kSelect + where).c_str());
  select.Bind(ToUpper(numberOrName));
  if (!select.Step()) return std::nullopt;
  return ProductIn(select);
}

bool PastProducts::HasBegun(const PastProduct& product, UtcTime from, UtcTime to) const {
  SqliteStatement select(database_,
                         "SELECT 1 FROM product WHERE (id = ?1 OR resend_of = ?1) AND "
                         "sent_as = ?2 AND first_block BETWEEN ?3 AND ?4");
  select.Bind(product.resendOf.value_or(product.id)).Bind(product.sentAs);
  select.Bind(from.time_since_epoch().count()).Bind(to.time_since_epoch().count());
  return select.Step();
}

std::optional<std::string> PastProducts::ContentOf(std::int64_t id) const {
  SqliteStatement select(database_, "SELECT size, packed FROM content WHERE id = ?1");
  select.Bind(id);
  if (!select.Step()) return std::nullopt;
  constexpr std::int64_t kLargest = 64 << 20;
  const auto packed = select.Bytes(1);
  std::string content(
      static_cast<std::size_t>(std::clamp<std::int64_t>(select.Number(0), 0, kLargest)), '\0');
  auto size = static_cast<uLongf>(content.size());
  const int result =
      uncompress(reinterpret_cast<Bytef*>(content.data()), &size,
                 reinterpret_cast<const Bytef*>(packed.data()), static_cast<uLong>(packed.size()));
  if (result != Z_OK || size != content.size())
    throw Failure(failure_number::kDeviceError, "What is kept of this product is damaged.");
  return content;
}

}  // namespace ostrel
