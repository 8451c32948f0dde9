#include "platform/linux/sqlite_settings_store.h"

#include <chrono>
#include <sqlite3.h>
#include <thread>

#include "base/failure.h"
#include "platform/linux/sqlite_database.h"

namespace ostrel {
namespace {

// The line is fed between two packets at most, and a stop is heard no later than this.
constexpr std::chrono::milliseconds kLongestWait{500};
constexpr std::chrono::milliseconds kWaitStep{10};

constexpr const char* kSchema =
    "CREATE TABLE IF NOT EXISTS setting ("
    "root INTEGER NOT NULL, path TEXT NOT NULL COLLATE NOCASE, name TEXT NOT NULL COLLATE NOCASE, "
    "value TEXT NOT NULL, is_raw INTEGER NOT NULL, PRIMARY KEY (root, path, name)) WITHOUT ROWID";

constexpr const char* kRead =
    "SELECT value FROM setting WHERE root = ?1 AND path = ?2 AND name = ?3 AND NOT is_raw";
constexpr const char* kWrite =
    "INSERT INTO setting (root, path, name, value, is_raw) VALUES (?1, ?2, ?3, ?4, ?5) "
    "ON CONFLICT DO UPDATE SET value = excluded.value, is_raw = excluded.is_raw";
constexpr const char* kList =
    "SELECT path, name, value, is_raw FROM setting WHERE root = ?1 AND (?2 = '' OR path = ?2 "
    "COLLATE NOCASE OR "
    "substr(path, 1, length(?2) + 1) = (?2 || '\\') COLLATE NOCASE) ORDER BY path, name";

/// The library's way of waiting while another process holds the store. `waited` sums up over all
/// that is done with one opening, so that many keys do not wait many times. 0 ends the waiting.
int WaitForStore(void* waited, int /*attempt*/) {
  using std::chrono::steady_clock;
  auto& sum = *static_cast<steady_clock::duration*>(waited);
  if (sum >= kLongestWait) return 0;
  const auto start = steady_clock::now();
  std::this_thread::sleep_for(kWaitStep);
  sum += steady_clock::now() - start;
  return 1;
}

/// Cut to `longest` bytes, or a few fewer so that no character is halved.
std::string Cut(std::string value, int longest) {
  auto size = static_cast<std::size_t>(longest);
  if (value.size() <= size) return value;
  while (size > 0 && (static_cast<unsigned char>(value[size]) & 0xC0) == 0x80) --size;
  value.resize(size);
  return value;
}

class SqliteSettingsStore : public SettingsStore {
 public:
  explicit SqliteSettingsStore(const std::string& path)
      : database_(path, "Settings store", DatabaseUse::kReadAndWrite) {
    sqlite3_busy_handler(database_.Handle(), WaitForStore, &waited_);
    // When another process is just doing the same, its doing suffices.
    sqlite3_exec(database_.Handle(), "PRAGMA journal_mode = WAL", nullptr, nullptr, nullptr);
    database_.Execute("PRAGMA synchronous = NORMAL");
    database_.Execute(kSchema);
  }

  void SetRootKey(std::uint32_t root) override { root_ = root; }

  std::string ReadSetting(const std::string& keyPath, const std::string& name,
                          const std::string& fallback, int longest) override {
    SqliteStatement read(database_, kRead);
    read.Bind(std::int64_t{root_});
    read.Bind(keyPath);
    read.Bind(name);
    return read.Step() ? Cut(read.Text(0), longest) : fallback;
  }

  bool WriteSetting(const std::string& keyPath, const std::string& name,
                    const std::string& value) override {
    try {
      WriteAll({{.keyPath = keyPath, .name = name, .value = value}});
      return true;
    } catch (const Failure&) {
      return false;
    }
  }

  std::vector<StoredValue> List(const std::string& keyPath) override {
    SqliteStatement list(database_, kList);
    list.Bind(std::int64_t{root_});
    list.Bind(keyPath);
    std::vector<StoredValue> values;
    while (list.Step()) {
      values.push_back({list.Text(0), list.Text(1), list.Text(2), list.Text(3) == "1"});
    }
    return values;
  }

  void WriteAll(const std::vector<StoredValue>& values) override {
    database_.InTransaction([&] {
      for (const auto& value : values) Put(value);
    });
  }

 private:
  void Put(const StoredValue& value) {
    SqliteStatement write(database_, kWrite);
    write.Bind(std::int64_t{root_});
    write.Bind(value.keyPath);
    write.Bind(value.name);
    write.Bind(value.value);
    write.Bind(std::int64_t{value.isRaw});
    write.Step();
  }

  std::chrono::steady_clock::duration waited_{};
  SqliteDatabase database_;
  std::uint32_t root_ = kHkeyLocalMachine;
};

}  // namespace

std::unique_ptr<SettingsStore> SqliteSettingsStores::Open() {
  return std::make_unique<SqliteSettingsStore>(path_);
}

}  // namespace ostrel
