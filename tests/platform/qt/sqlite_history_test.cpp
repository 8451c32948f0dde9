// The history's file: what is written to it, when, and what becomes of it in trouble.
#include "platform/qt/sqlite_history.h"

#include <QTest>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

#include "base/reporting.h"
#include "platform/linux/temporary_folder.h"
#include "tests/support/failure_of.h"

namespace ostrel {
namespace {

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
  const auto earlier = SqliteHistory(path_).Begin({.now = kNow + 1s});
  EXPECT_EQ(earlier.lastId, 2);
  ASSERT_EQ(earlier.open.size(), 1U);
  EXPECT_EQ(earlier.open[0].place, "RtPri5/A.TXT");
  EXPECT_EQ(earlier.open[0].fate, Fate::kWaiting);
  EXPECT_EQ(Ask("SELECT count(*) FROM content"), "0") << "they are kept no longer";
}

TEST_F(SqliteHistoryTest, ForgetsWhatIsTooOld) {
  SqliteHistory history(path_);
  history.Begin({.rows = std::chrono::days(400), .now = kNow});
  Put(history, 1, 401);
  Put(history, 2, 399);
  Put(history, 3, 401, true);
  history.End();
  history.Begin({.rows = std::chrono::days(400), .now = kNow});
  history.End();
  EXPECT_EQ(Ask("SELECT group_concat(id) FROM (SELECT id FROM product ORDER BY id)"), "2,3");
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
  std::optional<std::string> news;
  EXPECT_TRUE(QTest::qWaitFor([&] { return (news = history.TakeNews()).has_value(); }));
  EXPECT_NE(news->find("locked"), std::string::npos) << *news;
  for (int id = 1; id <= 1500; ++id) Put(history, id);
  other.Execute("COMMIT");
  history.End();
  EXPECT_EQ(Ask("SELECT count(*) FROM product"), "1500");
}

TEST_F(SqliteHistoryTest, SaysAtItsBeginningThatItCannotBeUsed) {
  std::ofstream(path_) << std::string(5000, 'x');
  EXPECT_EQ(FailureOf([&] { SqliteHistory(path_).Begin({.now = kNow}); }), 57);
  EXPECT_EQ(FailureOf([&] { SqliteHistory(folder_ / "none/x.db").Begin({.now = kNow}); }), 57);
}

}  // namespace
}  // namespace ostrel
