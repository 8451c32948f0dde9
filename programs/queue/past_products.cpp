#include "programs/queue/past_products.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <limits>
#include <zlib.h>

#include "base/failure.h"
#include "base/text.h"
#include "intake/match_pattern.h"

namespace ostrel {

namespace {

constexpr const char* kSelect =
    "SELECT id, name, sent_as, priority, size, hash, arrived, first_block, last_block, ended, "
    "times_sent, fate, archive, resend_of FROM product ";

std::string ExistingFile(const std::string& folder) {
  auto path = folder + "/KvHistory.db";
  if (!std::filesystem::exists(path))
    throw Failure(failure_number::kFileNotFound, fmt::format("There is no {}.", path));
  return path;
}

std::optional<std::int64_t> NumberIn(const SqliteStatement& row, int column) {
  if (row.IsNothing(column)) return std::nullopt;
  return row.Number(column);
}

std::optional<UtcTime> TimeIn(const SqliteStatement& row, int column) {
  if (row.IsNothing(column)) return std::nullopt;
  return UtcTime(milliseconds(row.Number(column)));
}

PastProduct ProductIn(const SqliteStatement& row) {
  PastProduct product;
  product.id = row.Number(0);
  product.name = row.Text(1);
  product.sentAs = row.Text(2);
  product.priority = NumberIn(row, 3);
  product.size = NumberIn(row, 4);
  product.hash = row.Text(5);
  product.arrived = UtcTime(milliseconds(row.Number(6)));
  product.firstBlock = TimeIn(row, 7);
  product.lastBlock = TimeIn(row, 8);
  product.ended = TimeIn(row, 9);
  product.timesSent = row.Number(10);
  product.fate = row.Text(11);
  product.archive = NumberIn(row, 12);
  product.resendOf = NumberIn(row, 13);
  return product;
}

}  // namespace

bool IsNumber(const std::string& text) {
  return !text.empty() && text.size() < 18 &&
         text.find_first_not_of("0123456789") == std::string::npos;
}

PastProducts::PastProducts(const std::string& folder)
    : database_(ExistingFile(folder), "History", DatabaseUse::kReadOnly) {
  database_.Execute("PRAGMA busy_timeout = 5000");
}

std::vector<PastProduct> PastProducts::Find(const PastFilter& filter) const {
  constexpr auto kEver = std::numeric_limits<std::int64_t>::max();
  const auto pattern = ToUpper(filter.pattern);
  const auto stamp = [](const std::optional<UtcTime>& time, std::int64_t fallback) {
    return time ? time->time_since_epoch().count() : fallback;
  };
  SqliteStatement select(
      database_, (std::string(kSelect) +
                  "WHERE arrived < ?1 AND (ended IS NULL OR ended >= ?2) ORDER BY arrived, id")
                     .c_str());
  select.Bind(stamp(filter.until, kEver)).Bind(stamp(filter.since, -kEver));
  std::vector<PastProduct> products;
  while (select.Step()) {
    auto product = ProductIn(select);
    if (pattern.empty() || MatchPattern(product.name, pattern) ||
        MatchPattern(product.sentAs, pattern))
      products.push_back(std::move(product));
  }
  return products;
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
