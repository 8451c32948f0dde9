// The history's file: what is written to it, when, and what becomes of it in trouble.
#include "platform/qt/sqlite_history.h"

#include <QTest>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include "base/reporting.h"
#include "platform/linux/temporary_folder.h"
#include "tests/support/failure_of.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

using namespace std::chrono_literals;

constexpr UtcTime kNow{std::chrono::days(20'000)};

class SqliteHistoryTest : public testing::Test {
 protected:
  /// Of a product that arrived so many days ago.
  void Put(History& history, std::int64_t id, int age = 0, bool isOpen = false) {
    ProductRow row;
    row.id = id;
    row.name = "A.TXT";
    row.place = isOpen ? "RtPri5/A.TXT" : "";
    row.priority = 5;
    row.arrived = kNow - std::chrono::days(age);
    row.fate = isOpen ? Fate::kWaiting : Fate::kSent;
    if (!isOpen) row.ended = row.arrived;
    history.Put(row, history.Open(product_));
    std::filesystem::remove(product_);  // read all the same
  }
  std::string Ask(const std::string& query) {
    SqliteDatabase database(path_, "test", DatabaseUse::kReadOnly);
    SqliteStatement statement(database, query.c_str());
    return statement.Step() ? statement.Text(0) : "";
  }
  void LayProduct() { std::ofstream(product_) << "abc"; }

  TemporaryFolder folder_;
  std::string path_ = folder_ / "KvHistory.db", product_ = folder_ / "A.TXT";
};

TEST_F(SqliteHistoryTest, KeepsRowsBytesAndWhatHasNotEndedAcrossRuns) {
  SqliteHistory history(path_);
  EXPECT_EQ(history.Begin({.products = std::chrono::days(7), .now = kNow}).lastId, 0);
  LayProduct();
  Put(history, 1);
  Put(history, 2, 0, true);
  EXPECT_TRUE(QTest::qWaitFor([&] { return Ask("SELECT count(*) FROM product") == "2"; }))
      << "without a further call";
  history.End();
  EXPECT_EQ(Ask("SELECT hash FROM product WHERE id = 1"),
            "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(Ask("SELECT size FROM content WHERE id = 1"), "3");
  EXPECT_EQ(Ask("SELECT fate FROM product WHERE id = 1"), "sent");
  const auto earlier = SqliteHistory(path_).Begin({.now = kNow + 7h});
  EXPECT_EQ(earlier.lastId, 2);
  ASSERT_EQ(earlier.open.size(), 1U);
  EXPECT_EQ(earlier.open[0].place, "RtPri5/A.TXT");
  EXPECT_EQ(earlier.open[0].fate, Fate::kWaiting);
  EXPECT_EQ(Ask("SELECT count(*) FROM content"), "0") << "they are kept no longer";
}

TEST_F(SqliteHistoryTest, ForgetsWhatIsTooOld) {
  SqliteHistory history(path_);
  history.Begin({.rows = std::chrono::days(400), .now = kNow - 7h});
  Put(history, 1, 401);
  Put(history, 2, 399);
  Put(history, 3, 401, true);
  history.End();
  history.Begin({.rows = std::chrono::days(400), .now = kNow});
  history.End();
  EXPECT_EQ(Ask("SELECT group_concat(id) FROM (SELECT id FROM product ORDER BY id)"), "2,3");
}

TEST_F(SqliteHistoryTest, LosesASmallShareToAClockThatIsWrongAndCatchesUpWhereItIsRight) {
  SqliteHistory history(path_);
  const auto run = [&](UtcTime now, int days) {
    history.Begin({.rows = std::chrono::days(days), .now = now});
    history.End();
    return std::stoi(Ask("SELECT count(*) FROM product"));
  };
  history.Begin({.now = kNow});
  for (int id = 1; id <= 4000; ++id) Put(history, id, id / 10);
  history.End();
  const auto ahead = kNow + std::chrono::days(36'525);
  EXPECT_GE(run(ahead, 400), 3990) << "of ten that grow old each day";
  EXPECT_GE(run(ahead + 5h, 400), 3990);
  const int left = run(kNow, 400);
  EXPECT_GE(left, 3990) << "back again";
  EXPECT_EQ(run(kNow + 5h, 400), left);
  EXPECT_EQ(Ask("SELECT min(id) FROM product WHERE arrived = (SELECT max(arrived) FROM product)"),
            "1")
      << "the oldest go first";
  auto now = kNow + std::chrono::days(1);
  for (int day = 0; day < 90; ++day) {
    for (int quarter = 0; quarter < 4; ++quarter) run(now += 6h, 30);
  }
  EXPECT_EQ(Ask("SELECT count(*) FROM product"), "0") << "kept for fewer days, they go in time";
}

TEST_F(SqliteHistoryTest, IsWaitedForByNobodyWhileAnotherHoldsIt) {
  SqliteHistory history(path_);
  history.Begin({.now = kNow});
  SqliteDatabase other(path_, "test", DatabaseUse::kReadAndWrite);
  // The writer may hold it just now.
  ASSERT_TRUE(QTest::qWaitFor([&] { return TryStep([&] { other.Execute("BEGIN IMMEDIATE"); }); }));
  const auto start = std::chrono::steady_clock::now();
  for (int id = 1; id <= 1000; ++id) Put(history, id);
  EXPECT_LT(std::chrono::steady_clock::now() - start, 400ms);
  std::optional<HistoryNews> news;
  EXPECT_TRUE(QTest::qWaitFor([&] { return (news = history.TakeNews()).has_value(); }));
  EXPECT_EQ(news->kind, HistoryNews::Kind::kFails);
  EXPECT_NE(news->text.find("locked"), std::string::npos) << news->text;
  for (int id = 1; id <= 1500; ++id) Put(history, id);
  other.Execute("COMMIT");
  history.End();
  EXPECT_EQ(Ask("SELECT count(*) FROM product"), "1500");
}

TEST_F(SqliteHistoryTest, BeginsAnewWhereItWasDamagedAndKeepsWhatWas) {
  const std::function<void()> damages[] = {
      [&] { std::ofstream(path_) << std::string(5000, 'x'); },
      [&] { fs::create_directory(path_); },
      [&] { fs::create_symlink("gone", path_); },
      [&] {
        SqliteDatabase(path_, "", DatabaseUse::kReadAndWrite).Execute("CREATE TABLE product (x)");
      },
  };
  for (const auto& damage : damages) {
    for (const auto& entry : fs::directory_iterator(folder_.path())) fs::remove_all(entry);
    damage();
    SqliteHistory history(path_);
    EXPECT_EQ(history.Begin({.now = kNow}).lastId, 0);
    const auto news = history.TakeNews();
    ASSERT_TRUE(news);
    EXPECT_EQ(news->kind, HistoryNews::Kind::kBegunAnew);
    EXPECT_NE(news->text.find("It is kept as KvHistory.damaged-2024-10-04-000000.db"),
              std::string::npos)
        << news->text;
    EXPECT_TRUE(fs::exists(fs::symlink_status(folder_ / "KvHistory.damaged-2024-10-04-000000.db")));
    Put(history, 1);
    history.End();
    EXPECT_EQ(Ask("SELECT count(*) FROM product"), "1");
  }
}

TEST_F(SqliteHistoryTest, LosesNoRowThatIsWrittenWhenItMeetsWithDamage) {
  {
    SqliteHistory history(path_);
    history.Begin({.now = kNow});
    for (int id = 1; id <= 500; ++id) Put(history, id);
  }
  std::ifstream file(path_, std::ios::binary);
  const std::string whole{std::istreambuf_iterator<char>(file), {}};
  constexpr std::size_t kPage = 4096;
  int begunAnew = 0;
  for (std::size_t page = 0; page < whole.size() / kPage; ++page) {
    SCOPED_TRACE(page);
    for (const auto& entry : fs::directory_iterator(folder_.path())) fs::remove_all(entry);
    std::ofstream(path_, std::ios::binary)
        << std::string(whole).replace(page * kPage, kPage, kPage, '\x5A');
    SqliteHistory history(path_);
    history.Begin({.now = kNow});
    for (int id = 1; id <= 500; id += 7) Put(history, id, 1, true);
    history.End();
    if (const auto news = history.TakeNews(); news && news->kind == HistoryNews::Kind::kBegunAnew)
      ++begunAnew;
    EXPECT_EQ(Ask("SELECT count(*) FROM product WHERE fate = 'waiting'"), "72");
    EXPECT_EQ(Ask("PRAGMA integrity_check(1)"), "ok");
  }
  EXPECT_GE(begunAnew, 10);
}

std::atomic<bool> isUnread = false;
sqlite3_syscall_ptr readOfSystem = nullptr;

ssize_t ReadOrFail(int file, void* to, std::size_t count, off_t from) {
  if (!isUnread) return reinterpret_cast<decltype(&pread)>(readOfSystem)(file, to, count, from);
  errno = EIO;
  return -1;
}

TEST_F(SqliteHistoryTest, IsNotDamagedForADiskThatCannotReadForAWhile) {
  auto* const system = sqlite3_vfs_find(nullptr);
  const auto replaceRead = [&](sqlite3_syscall_ptr call) {
    for (const auto* name : {"pread", "pread64"}) system->xSetSystemCall(system, name, call);
  };
  readOfSystem = system->xGetSystemCall(system, "pread64");
  if (readOfSystem == nullptr) readOfSystem = system->xGetSystemCall(system, "pread");
  SqliteHistory history(path_);
  history.Begin({.now = kNow});
  Put(history, 1);
  history.End();  // all is written
  history.Begin({.now = kNow});
  // What another connection writes, this one has to read.
  SqliteDatabase(path_, "test", DatabaseUse::kReadAndWrite)
      .Execute("UPDATE product SET name = 'B'");
  replaceRead(reinterpret_cast<sqlite3_syscall_ptr>(ReadOrFail));
  isUnread = true;
  Put(history, 2);
  std::optional<HistoryNews> news;
  EXPECT_TRUE(QTest::qWaitFor([&] { return (news = history.TakeNews()).has_value(); }));
  EXPECT_EQ(news->kind, HistoryNews::Kind::kFails) << news->text;
  isUnread = false;
  history.End();
  replaceRead(nullptr);
  EXPECT_EQ(Ask("SELECT group_concat(name) FROM product"), "B,A.TXT");
}

TEST_F(SqliteHistoryTest, SaysAtItsBeginningThatItCannotBeUsed) {
  SqliteDatabase(path_, "", DatabaseUse::kReadAndWrite).Execute("PRAGMA user_version = 2");
  EXPECT_EQ(FailureOf([&] { SqliteHistory(path_).Begin({.now = kNow}); }), 57) << "a later version";
  EXPECT_EQ(FailureOf([&] { SqliteHistory(folder_ / "none/x.db").Begin({.now = kNow}); }), 57);
}

}  // namespace
}  // namespace ostrel
