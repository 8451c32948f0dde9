#include "feed/feed_memory.h"

#include <sqlite3.h>

namespace ostrel {
namespace {

// A full flush at each record: what a power failure takes back would come twice.
constexpr const char* kSchema =
    "PRAGMA journal_mode = WAL;"
    "PRAGMA synchronous = FULL;"
    "CREATE TABLE IF NOT EXISTS product ("
    "name TEXT NOT NULL, hash TEXT NOT NULL, at INTEGER NOT NULL, PRIMARY KEY (name, hash)) "
    "WITHOUT ROWID;"
    "CREATE TABLE IF NOT EXISTS taken ("
    "key TEXT PRIMARY KEY, state TEXT NOT NULL, at INTEGER NOT NULL) WITHOUT ROWID;"
    "CREATE TABLE IF NOT EXISTS placement (hidden TEXT NOT NULL, path TEXT NOT NULL)";

constexpr int kPatience = 5000;  // milliseconds; a backup may be reading

std::int64_t Number(FeedMemory::Time time) {
  return time.time_since_epoch().count();
}

}  // namespace

FeedMemory::FeedMemory(const std::string& path)
    : database_(path, "Memory of the feed", DatabaseUse::kReadAndWrite) {
  sqlite3_busy_timeout(database_.Handle(), kPatience);
  database_.Execute(kSchema);
}

bool FeedMemory::IsTaken(const Mark& mark) {
  SqliteStatement query(database_, "SELECT 1 FROM taken WHERE key = ?1 AND state = ?2");
  query.Bind(mark.key);
  query.Bind(mark.state);
  return query.Step();
}

bool FeedMemory::IsRepeat(const std::string& name, const std::string& hash, Time now,
                          std::chrono::seconds age) {
  SqliteStatement query(database_, "SELECT at FROM product WHERE name = ?1 AND hash = ?2");
  query.Bind(name);
  query.Bind(hash);
  if (!query.Step()) return false;
  // A clock that was set back must not let everything through for as long as it was wrong.
  return std::chrono::abs(std::chrono::seconds(Number(now) - query.Number(0))) < age;
}

void FeedMemory::Record(const std::string& name, const std::string& hash, const Mark& mark,
                        Time now, const std::vector<Placement>& placements) {
  database_.InTransaction([&] {
    SqliteStatement product(database_, "INSERT OR REPLACE INTO product VALUES (?1, ?2, ?3)");
    product.Bind(name);
    product.Bind(hash);
    product.Bind(Number(now));
    product.Step();
    Insert(mark, now);
    database_.Execute("DELETE FROM placement");
    for (const auto& placement : placements) {
      SqliteStatement insert(database_, "INSERT INTO placement VALUES (?1, ?2)");
      insert.Bind(placement.hidden);
      insert.Bind(placement.path);
      insert.Step();
    }
  });
}

void FeedMemory::RecordMark(const Mark& mark, Time now) {
  database_.InTransaction([&] { Insert(mark, now); });
}

void FeedMemory::Insert(const Mark& mark, Time now) {
  if (mark.key.empty()) return;
  SqliteStatement insert(database_, "INSERT OR REPLACE INTO taken VALUES (?1, ?2, ?3)");
  insert.Bind(mark.key);
  insert.Bind(mark.state);
  insert.Bind(Number(now));
  insert.Step();
}

std::vector<Placement> FeedMemory::LastPlacements() {
  SqliteStatement query(database_, "SELECT hidden, path FROM placement");
  std::vector<Placement> placements;
  while (query.Step()) placements.push_back({query.Text(0), query.Text(1)});
  return placements;
}

void FeedMemory::Forget(Time products, Time marks,
                        const std::function<bool(const std::string&)>& isGone) {
  std::vector<std::string> gone;
  SqliteStatement old(database_, "SELECT key FROM taken WHERE at < ?1");
  old.Bind(Number(marks));
  while (old.Step()) {
    if (auto key = old.Text(0); isGone(key)) gone.push_back(std::move(key));
  }
  database_.InTransaction([&] {
    SqliteStatement remove(database_, "DELETE FROM product WHERE at < ?1");
    remove.Bind(Number(products));
    remove.Step();
    for (const auto& key : gone) {
      SqliteStatement removeMark(database_, "DELETE FROM taken WHERE key = ?1");
      removeMark.Bind(key);
      removeMark.Step();
    }
  });
}

}  // namespace ostrel
