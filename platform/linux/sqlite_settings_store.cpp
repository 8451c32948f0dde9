#include "platform/linux/sqlite_settings_store.h"

#include <chrono>
#include <memory>
#include <sqlite3.h>
#include <thread>

#include "base/failure.h"
#include "base/reporting.h"
#include "platform/linux/file_io.h"
#include "platform/linux/set_aside.h"
#include "platform/linux/settings_seal.h"
#include "platform/linux/sqlite_database.h"
#include "platform/linux/system_error.h"
#include "platform/linux/temporary_file.h"

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

/// One opening of the file, and how long it has waited for others.
class WaitingDatabase {
 public:
  WaitingDatabase(const std::string& path, DatabaseUse use) : database_(path, kSettingsStore, use) {
    sqlite3_busy_handler(database_.Handle(), WaitForStore, &waited_);
  }
  SqliteDatabase& operator*() { return database_; }
  SqliteDatabase* operator->() { return &database_; }

 private:
  std::chrono::steady_clock::duration waited_{};
  SqliteDatabase database_;
};

class SqliteSettingsStore : public SettingsStore {
 public:
  explicit SqliteSettingsStore(const std::string& path)
      : opened_(path, DatabaseUse::kReadAndWrite), database_(*opened_) {
    CheckFormat(database_);
    // One file and nothing beside it: it is read on a full disk, and where nothing may be written.
    // A store that was kept otherwise is turned when nobody else has it open.
    sqlite3_exec(database_.Handle(), "PRAGMA journal_mode = DELETE", nullptr, nullptr, nullptr);
    database_.Execute("PRAGMA synchronous = FULL");
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
      MakeSeal(database_);
      for (const auto& value : values) Put(value);
      Seal(database_);
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

  WaitingDatabase opened_;
  SqliteDatabase& database_;
  std::uint32_t root_ = kHkeyLocalMachine;
};

/// Of what lies there, though nothing may.
StoreLook LookAt(const std::string& path) {
  try {
    struct stat status;
    if (lstat(path.c_str(), &status) != 0 && errno == ENOENT) return {StoreState::kMissing, ""};
    WaitingDatabase database(path, DatabaseUse::kExisting);
    CheckFormat(*database);
    return {ContentState(*database), ""};
  } catch (const DamagedDatabase& damage) {
    return {StoreState::kDamaged, damage.why()};
  }
}

/// The whole file at `path`, as it stands between two changes.
std::string ImageOf(const std::string& path) {
  WaitingDatabase database(path, DatabaseUse::kExisting);
  database->Execute("BEGIN");
  sqlite3_int64 size = 0;
  const std::unique_ptr<unsigned char, decltype(&sqlite3_free)> image(
      sqlite3_serialize(database->Handle(), "main", &size, 0), sqlite3_free);
  if (!image) database->Fail();
  return {reinterpret_cast<const char*>(image.get()), static_cast<std::size_t>(size)};
}

UtcTime Now() {
  return std::chrono::floor<milliseconds>(std::chrono::system_clock::now());
}

void CheckWritten(int error, const std::string& path) {
  if (error != 0) ThrowFileFailure(error, path);
}

}  // namespace

SqliteSettingsStores::SqliteSettingsStores(std::string path)
    : path_(std::move(path)), copyPath_(path_.substr(0, path_.rfind('.')) + ".copy.db") {}

std::unique_ptr<SettingsStore> SqliteSettingsStores::Open() {
  return std::make_unique<SqliteSettingsStore>(path_);
}

StoreLook SqliteSettingsStores::Look() {
  return LookAt(path_);
}

void SqliteSettingsStores::KeepCopy() {
  const auto image = ImageOf(path_);
  std::string present;
  TryStep([&] { present = ImageOf(copyPath_); });
  if (image == present) return;
  TemporaryFile copy(FolderToCreateIn(copyPath_));
  CheckWritten(copy.Error(), copyPath_);
  CheckWritten(copy.Write(image), copyPath_);
  const auto look = LookAt(copy.Path());
  if (look.state != StoreState::kGood)
    throw Failure(failure_number::kDeviceError, "what was stored is not whole: " + look.why);
  CheckWritten(copy.Commit(copyPath_, Now()), copyPath_);
  FlushFolder(FolderToCreateIn(copyPath_));
}

std::optional<std::string> SqliteSettingsStores::TakeCopy(UtcTime now) {
  if (LookAt(copyPath_).state != StoreState::kGood) return std::nullopt;
  auto aside = ostrel::SetAside(path_, now);
  // Not by another copy of it: a full disk has no room.
  CheckWritten(rename(copyPath_.c_str(), path_.c_str()) == 0 ? 0 : errno, path_);
  FlushFolder(FolderToCreateIn(path_));
  return aside;
}

void SqliteSettingsStores::SetAside(UtcTime now) {
  ostrel::SetAside(path_, now);
}

}  // namespace ostrel
