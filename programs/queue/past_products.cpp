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

enum class Direction { kUp, kDown };

/// Calls `take` with the rows between two ids, as far as they can be read. Returns the id of the
/// last one, where damage hides what follows it: `from` when that is the first.
template <typename Take>
std::optional<std::int64_t> ReadUntilDamage(const SqliteDatabase& database, Direction direction,
                                            std::int64_t from, std::int64_t to, const Take& take) {
  const std::string rows =
      std::string(kSelect) + "NOT INDEXED WHERE id > ?1 AND id < ?2 ORDER BY id";
  SqliteStatement select(database, (rows + (direction == Direction::kUp ? "" : " DESC")).c_str());
  select.Bind(std::min(from, to)).Bind(std::max(from, to));
  auto last = from;
  try {
    while (select.Step()) {
      last = select.Number(0);
      take(ProductIn(select));
    }
    return std::nullopt;
  } catch (const DamagedDatabase&) {
    return last;
  }
}

/// The first id behind `last` that can be read, looked for further and further on.
std::int64_t NextReadable(const SqliteDatabase& database, std::int64_t last) {
  constexpr std::int64_t kFurthest = std::int64_t{1} << 40;
  for (std::int64_t gap = 1; gap < kFurthest && last < kEver - gap; gap *= 2) {
    SqliteStatement next(database, "SELECT min(id) FROM product NOT INDEXED WHERE id > ?1");
    next.Bind(last + gap);
    try {
      next.Step();
      return next.IsNothing(0) ? kEver : next.Number(0);
    } catch (const DamagedDatabase&) {
      // Not yet.
    }
  }
  return kEver;
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

PastProducts::Found PastProducts::Find(const PastFilter& filter) const {
  const auto pattern = ToUpper(filter.pattern);
  Found found;
  const auto take = [&](PastProduct product) {
    const bool wasOnItsWay = (!filter.until || product.arrived < *filter.until) &&
                             (!filter.since || !product.ended || *product.ended >= *filter.since);
    const bool isNamed = pattern.empty() || MatchPattern(product.name, pattern) ||
                         MatchPattern(product.sentAs, pattern);
    if (wasOnItsWay && isNamed) found.products.push_back(std::move(product));
  };
  std::int64_t from = 0;
  while (const auto last = ReadUntilDamage(database_, Direction::kUp, from, kEver, take)) {
    ++found.holes;
    const auto next = NextReadable(database_, *last);
    ReadUntilDamage(database_, Direction::kDown, next, *last, take);  // what was leapt over
    if (next == kEver) break;
    from = next - 1;
  }
  std::ranges::sort(found.products, {}, [](const PastProduct& product) {
    return std::pair(product.arrived, product.id);
  });
  return found;
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
