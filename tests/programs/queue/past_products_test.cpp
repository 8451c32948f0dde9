// What is read of a history that was damaged.
#include "programs/queue/past_products.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "platform/linux/temporary_folder.h"
#include "platform/qt/sqlite_history.h"
#include "programs/queue/reports.h"
#include "tests/support/failure_of.h"

namespace ostrel {
namespace {

constexpr UtcTime kNow{std::chrono::days(20'000)};
constexpr int kCount = 2500;
constexpr std::size_t kPage = 4096;
constexpr int kRowsOfAPage = 100;  // at most

class PastProductsTest : public testing::Test {
 protected:
  PastProductsTest() {
    SqliteHistory history(path_);
    history.Begin({.now = kNow});
    for (int id = 1; id <= kCount; ++id) {
      ProductRow row;
      row.id = id;
      row.name = NameOf(id);
      row.arrived = kNow + std::chrono::seconds(kCount - id);  // in another order
      row.fate = Fate::kSent;
      row.ended = row.arrived;
      history.Put(row, nullptr);
    }
    history.End();
    std::ifstream file(path_, std::ios::binary);
    whole_ = {std::istreambuf_iterator<char>(file), {}};
  }
  static std::string NameOf(std::int64_t id) { return "P" + std::to_string(id) + ".TXT"; }
  void Lay(const std::string& content) { std::ofstream(path_, std::ios::binary) << content; }
  struct Found {
    int products = 0, holes = 0, parts = 0;
  };
  /// What is read is true, each once, in order, and little at a time.
  Found Read(const PastFilter& filter = {}) {
    Found found;
    std::int64_t last = 0;
    found.holes = PastProducts(path_).Find(filter, [&](const auto& part) {
      ++found.parts;
      EXPECT_LE(part.size(), PastProducts::kPart);
      for (const auto& product : part) {
        EXPECT_EQ(product.name, NameOf(product.id));
        EXPECT_GT(product.id, std::exchange(last, product.id));
        ++found.products;
      }
    });
    return found;
  }

  TemporaryFolder folder_;
  std::string path_ = folder_ / "KvHistory.damaged-2026-11-18-120000.db", whole_;
};

TEST_F(PastProductsTest, EveryProductIsFoundButThoseThatLieInTheDamageItself) {
  const auto all = Read();
  EXPECT_EQ((std::array{all.products, all.holes, all.parts}), (std::array{kCount, 0, 3}));
  const auto at = kNow + std::chrono::seconds(500);
  EXPECT_EQ(Read({.pattern = "", .since = at + milliseconds(1), .until = {}}).products,
            kCount - 501);
  EXPECT_EQ(Read({.pattern = "p7?.txt", .since = {}, .until = at}).products, 0);
  EXPECT_EQ(Read({.pattern = "p210?.txt", .since = {}, .until = at}).products, 10);
  int damaged = 0;
  for (std::size_t page = 1; page < whole_.size() / kPage; ++page) {
    Lay(std::string(whole_).replace(page * kPage, kPage, kPage, '\x5A'));
    try {
      const auto found = Read();
      EXPECT_EQ(found.holes > 0, found.products < kCount) << page;
      EXPECT_TRUE(found.products >= kCount - kRowsOfAPage || found.products == 0) << page;
      damaged += found.holes > 0 ? 1 : 0;
    } catch (const DamagedDatabase&) {
      ADD_FAILURE() << page;
    }
  }
  EXPECT_GE(damaged, 20);

  Lay(whole_.substr(0, whole_.size() / 2));
  const auto half = Read();
  EXPECT_GE(half.products, kCount / 4);
  EXPECT_GE(half.holes, 1);
  Lay("damaged");
  EXPECT_EQ(FailureOf([&] { Read(); }), 57);
  EXPECT_EQ(FailureOf([&] { PastProducts(folder_ / "none.db"); }), 53);
}

TEST(HistoryText, IsOneDocumentOfAllItsParts) {
  PastProduct product;
  product.name = "A,B.TXT";
  for (const std::size_t parts : {0U, 1U, 3U}) {
    const auto written = [&](HistoryText::Form form) {
      HistoryText text(form);
      std::string whole;
      for (std::size_t i = 0; i < parts; ++i) whole += text.Of({product, product});
      return whole + text.End();
    };
    const auto json = nlohmann::json::parse(written(HistoryText::Form::kJson));
    EXPECT_EQ(json.size(), 2 * parts);
    for (const auto& row : json) EXPECT_EQ(row["name"], "A,B.TXT");
    for (const auto form : {HistoryText::Form::kTable, HistoryText::Form::kCsv})
      EXPECT_EQ(std::ranges::count(written(form), '\n'), 1 + 2 * parts);
  }
}

}  // namespace
}  // namespace ostrel
