// A settings store that is damaged, gone, or only not to be had now.
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <sqlite3.h>
#include <sys/stat.h>

#include "platform/linux/sqlite_settings_store.h"
#include "platform/linux/temporary_folder.h"
#include "tests/support/failure_of.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr const char* kSettings = "Software\\Corvain\\Ostrel\\Settings";
constexpr UtcTime kNow = std::chrono::sys_days(std::chrono::year(2026) / 11 / 18) + 12h;
constexpr const char* kAside = "KvRegistry.damaged-2026-11-18-120000.db";

class DamagedStoreTest : public testing::Test {
 protected:
  DamagedStoreTest() {
    Open()->WriteAll({{kSettings, "CWIDText", "DE KX1ABC"}, {kSettings, "ComBaud", "9600"}});
    values_ = Open()->List("");
    content_ = ReadFile(path_);
  }
  std::unique_ptr<SettingsStore> Open() {
    auto store = stores_.Open();
    store->SetRootKey(kHkeyLocalMachine);
    return store;
  }
  static std::string ReadFile(const std::string& path) {
    if (!fs::is_regular_file(path)) return {};
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  void Lay(const std::string& content) { std::ofstream(path_, std::ios::binary) << content; }
  void Execute(const char* command) {
    sqlite3* other = nullptr;
    EXPECT_EQ(sqlite3_open(path_.c_str(), &other), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(other, command, nullptr, nullptr, nullptr), SQLITE_OK) << command;
    sqlite3_close(other);
  }
  std::string WithChance(int changes) {
    auto damaged = content_;
    for (int i = 0; i < changes; ++i)
      damaged[chance_() % damaged.size()] = static_cast<char>(chance_());
    return damaged;
  }
  /// The whole store again, and its copy, and nothing else.
  void Mend() {
    for (const auto& entry : fs::directory_iterator(folder_.path())) fs::remove_all(entry);
    Lay(content_);
    stores_.KeepCopy();
  }

  TemporaryFolder folder_;
  std::string path_ = folder_ / "KvRegistry.db";
  SqliteSettingsStores stores_{path_};
  std::vector<StoredValue> values_;
  std::string content_;
  std::mt19937 chance_{20261118};
};

TEST_F(DamagedStoreTest, NoChangedByteMakesOtherValuesOfIt) {
  int damaged = 0;
  for (int trial = 0; trial < 1000; ++trial) {
    Lay(WithChance(1));
    StoreLook look;
    const bool isSaid = FailureOf([&] { look = stores_.Look(); }) == 0;
    if (isSaid && look.state == StoreState::kGood) {
      EXPECT_EQ(Open()->List(""), values_);
    } else {
      ++damaged;
    }
  }
  EXPECT_GT(damaged, 50);
}

TEST_F(DamagedStoreTest, IsSetAsideWhateverLiesThereAndTheCopyTakesItsPlace) {
  std::vector<std::function<void()>> damages = {
      [&] { Lay(WithChance(1000)); },
      [&] { Lay(std::string(content_.size(), '\0')); },
      [&] { Lay("This is no settings store."); },
      [&] { Lay(std::string(content_).replace(content_.find("KX1ABC"), 6, "KZ9XYZ")); },
      [&] { fs::create_directory(path_); },
      [&] { fs::create_symlink("gone", path_); },
      [&] { fs::create_symlink("/dev/zero", path_); },
      [&] { mkfifo(path_.c_str(), 0600); },
      [&] { Execute("CREATE TABLE another (x)"); },
      [] {},  // it is gone
  };
  for (std::size_t tenth = 0; tenth < 10; ++tenth)
    damages.emplace_back([=, this] { Lay(content_.substr(0, content_.size() * tenth / 10)); });
  for (std::size_t i = 0; i < damages.size(); ++i) {
    SCOPED_TRACE(i);
    Mend();
    fs::remove(path_);
    damages[i]();
    EXPECT_NE(stores_.Look().state, StoreState::kGood);
    EXPECT_NE(FailureOf([&] { stores_.KeepCopy(); }), 0) << "the copy is the last whole one";
    const bool isThere = fs::exists(fs::symlink_status(path_));
    const auto before = ReadFile(path_);
    EXPECT_EQ(stores_.TakeCopy(kNow), isThere ? kAside : "");
    EXPECT_EQ(fs::exists(fs::symlink_status(folder_ / kAside)), isThere);
    EXPECT_EQ(ReadFile(folder_ / kAside), before) << "nothing of it is lost";
    EXPECT_EQ(stores_.Look().state, StoreState::kGood);
    EXPECT_EQ(Open()->List(""), values_);
  }
}

TEST_F(DamagedStoreTest, GoesWithWhatBelongsToItAndNeverOntoAnotherThatWasSetAside) {
  Mend();
  for (const auto* beside : {"-wal", "-shm", "-journal"}) std::ofstream(path_ + beside) << beside;
  std::ofstream(folder_ / kAside) << "earlier";
  Lay("");
  EXPECT_EQ(stores_.TakeCopy(kNow), "KvRegistry.damaged-2026-11-18-120000-2.db");
  EXPECT_EQ(ReadFile(folder_ / kAside), "earlier");
  for (const auto* beside : {"-wal", "-shm", "-journal"}) {
    EXPECT_FALSE(fs::exists(path_ + beside));
    EXPECT_EQ(ReadFile(folder_ / "KvRegistry.damaged-2026-11-18-120000-2.db" + beside), beside);
  }
}

TEST_F(DamagedStoreTest, HasNoCopyThatIsNotWholeItself) {
  Mend();
  Lay("damaged");
  std::ofstream(folder_ / "KvRegistry.copy.db") << "damaged, too";
  EXPECT_EQ(stores_.TakeCopy(kNow), std::nullopt);
  EXPECT_EQ(ReadFile(path_), "damaged") << "it stays where it is";
}

TEST_F(DamagedStoreTest, OneThatIsHeldOrMayNotBeWrittenOrIsOfAnotherVersionIsNotDamaged) {
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(path_.c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
  EXPECT_EQ(FailureOf([&] { stores_.Look(); }), 57);
  sqlite3_close(other);

  Execute("PRAGMA user_version = 2");
  EXPECT_EQ(FailureOf([&] { stores_.Look(); }), 57) << "a later version";
  EXPECT_EQ(FailureOf([&] { Open(); }), 57) << "nobody writes into it";

  // An earlier one had no checksum, another way of keeping its changes, and is believed.
  Lay(content_);
  Execute("UPDATE setting SET value = 'DE KX2'");
  EXPECT_EQ(stores_.Look().state, StoreState::kGood) << "so is who changes it by hand";
  Execute(
      "DROP TRIGGER setting_added; DROP TRIGGER setting_changed; DROP TRIGGER setting_removed;"
      "DROP TABLE seal; PRAGMA user_version = 0");
  Execute("PRAGMA journal_mode = WAL");
  EXPECT_EQ(stores_.Look().state, StoreState::kGood);
  EXPECT_TRUE(Open()->WriteSetting(kSettings, "ComBaud", "1200"));
  stores_.KeepCopy();
  EXPECT_EQ(stores_.Look().state, StoreState::kGood);
  EXPECT_FALSE(fs::exists(path_ + "-wal"));
}

TEST_F(DamagedStoreTest, OneThatNothingWasStoredInIsMissingUntilItIsMade) {
  fs::remove(path_);
  EXPECT_EQ(stores_.Look().state, StoreState::kMissing);
  Open()->ReadSetting(kSettings, "ComBaud", "1200");
  EXPECT_EQ(stores_.Look().state, StoreState::kMissing) << "who only reads makes none";
  Open()->WriteAll({});
  EXPECT_EQ(stores_.Look().state, StoreState::kGood);
}

}  // namespace
}  // namespace ostrel
