#include "platform/linux/sqlite_settings_store.h"

#include <chrono>
#include <fcntl.h>
#include <sqlite3.h>
#include <thread>

#include "base/failure.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/file_io.h"

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

/// The library always asks to create its journal; see OpenOrMake for the folder where that fails.
int OpenForLibrary(const char* path, int flags, int mode) {
  const bool mayBePresent = (flags & (O_CREAT | O_EXCL)) == O_CREAT;
  if (!mayBePresent) return open(path, flags, mode);
  return OpenOrMake(path, flags & ~O_CREAT, static_cast<unsigned>(mode));
}

// The library would close the file of a new store to the station's group. The file is shut again
// before the library opens it: shutting it later would end every lock that the library holds on it.
void MakeForGroup(const std::string& path) {
  const Descriptor made(OpenOrMake(path.c_str(), O_RDWR));
}

void UseOwnOpen() {
  auto* const system = sqlite3_vfs_find(nullptr);
  system->xSetSystemCall(system, "open", reinterpret_cast<sqlite3_syscall_ptr>(OpenForLibrary));
}

struct CloseDatabase {
  void operator()(sqlite3* database) const { sqlite3_close(database); }
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;

[[noreturn]] void StoreFails(sqlite3* database) {
  throw Failure(failure_number::kDeviceError,
                std::string("Settings store: ") + sqlite3_errmsg(database));
}

void Execute(sqlite3* database, const char* command) {
  if (sqlite3_exec(database, command, nullptr, nullptr, nullptr) != SQLITE_OK) StoreFails(database);
}

/// One statement with its values; a query's rows come one by one.
class Statement {
 public:
  Statement(sqlite3* database, const char* text) : database_(database) {
    if (sqlite3_prepare_v2(database, text, -1, &statement_, nullptr) != SQLITE_OK) {
      StoreFails(database);
    }
  }
  ~Statement() { sqlite3_finalize(statement_); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  void Bind(std::int64_t number) { sqlite3_bind_int64(statement_, ++bound_, number); }
  void Bind(const std::string& text) {
    sqlite3_bind_text(statement_, ++bound_, text.data(), static_cast<int>(text.size()),
                      SQLITE_TRANSIENT);
  }
  bool Step() {
    const int result = sqlite3_step(statement_);
    if (result != SQLITE_ROW && result != SQLITE_DONE) StoreFails(database_);
    return result == SQLITE_ROW;
  }
  std::string Text(int column) const {
    const auto* const text = sqlite3_column_text(statement_, column);
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement_, column));
    return text == nullptr ? std::string{} : std::string(reinterpret_cast<const char*>(text), size);
  }

 private:
  sqlite3* database_;
  sqlite3_stmt* statement_ = nullptr;
  int bound_ = 0;
};

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
  explicit SqliteSettingsStore(const std::string& path) {
    UseOwnOpen();
    MakeForGroup(path);
    sqlite3* opened = nullptr;
    const int result = sqlite3_open(path.c_str(), &opened);
    database_.reset(opened);
    if (result != SQLITE_OK) StoreFails(opened);
    sqlite3_busy_handler(opened, WaitForStore, &waited_);
    // When another process is just doing the same, its doing suffices.
    sqlite3_exec(opened, "PRAGMA journal_mode = WAL", nullptr, nullptr, nullptr);
    Execute(opened, "PRAGMA synchronous = NORMAL");
    Execute(opened, kSchema);
  }

  void SetRootKey(std::uint32_t root) override { root_ = root; }

  std::string ReadSetting(const std::string& keyPath, const std::string& name,
                          const std::string& fallback, int longest) override {
    Statement read(database_.get(), kRead);
    read.Bind(root_);
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
    Statement list(database_.get(), kList);
    list.Bind(root_);
    list.Bind(keyPath);
    std::vector<StoredValue> values;
    while (list.Step()) {
      values.push_back({list.Text(0), list.Text(1), list.Text(2), list.Text(3) == "1"});
    }
    return values;
  }

  void WriteAll(const std::vector<StoredValue>& values) override {
    Execute(database_.get(), "BEGIN IMMEDIATE");
    try {
      for (const auto& value : values) Put(value);
      Execute(database_.get(), "COMMIT");
    } catch (const Failure&) {
      sqlite3_exec(database_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
      throw;
    }
  }

 private:
  void Put(const StoredValue& value) {
    Statement write(database_.get(), kWrite);
    write.Bind(root_);
    write.Bind(value.keyPath);
    write.Bind(value.name);
    write.Bind(value.value);
    write.Bind(value.isRaw ? 1 : 0);
    write.Step();
  }

  std::chrono::steady_clock::duration waited_{};
  Database database_;
  std::uint32_t root_ = kHkeyLocalMachine;
};

}  // namespace

std::unique_ptr<SettingsStore> SqliteSettingsStores::Open() {
  return std::make_unique<SqliteSettingsStore>(path_);
}

}  // namespace ostrel
