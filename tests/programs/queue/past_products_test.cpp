// What is read of a history that was damaged.
#include "programs/queue/past_products.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <set>

#include "base/failure.h"
#include "platform/linux/temporary_folder.h"
#include "platform/qt/sqlite_history.h"
#include "tests/support/failure_of.h"

namespace ostrel {
namespace {

constexpr UtcTime kNow{std::chrono::days(20'000)};
constexpr int kCount = 2000;
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
  /// What is read is true, each once, and in order.
  PastProducts::Found Read() {
    auto found = PastProducts(path_).Find({});
    std::set<std::int64_t> ids;
    UtcTime last{};
    for (const auto& product : found.products) {
      EXPECT_EQ(product.name, NameOf(product.id));
      EXPECT_TRUE(ids.insert(product.id).second);
      EXPECT_GE(product.arrived, std::exchange(last, product.arrived));
    }
    return found;
  }

  TemporaryFolder folder_;
  std::string path_ = folder_ / "KvHistory.damaged-2026-11-18-120000.db", whole_;
};

TEST_F(PastProductsTest, EveryProductIsFoundButThoseThatLieInTheDamageItself) {
  EXPECT_EQ(Read().products.size(), kCount);
  EXPECT_EQ(Read().holes, 0);
  int damaged = 0;
  for (std::size_t page = 1; page < whole_.size() / kPage; ++page) {
    Lay(std::string(whole_).replace(page * kPage, kPage, kPage, '\x5A'));
    try {
      const auto found = Read();
      EXPECT_EQ(found.holes > 0, found.products.size() < kCount) << page;
      EXPECT_TRUE(found.products.size() >= kCount - kRowsOfAPage || found.products.empty()) << page;
      damaged += found.holes > 0 ? 1 : 0;
    } catch (const DamagedDatabase&) {
      ADD_FAILURE() << page;
    }
  }
  EXPECT_GE(damaged, 20);

  Lay(whole_.substr(0, whole_.size() / 2));
  const auto half = Read();
  EXPECT_GE(half.products.size(), kCount / 4);
  EXPECT_GE(half.holes, 1);
  Lay("damaged");
  EXPECT_EQ(FailureOf([&] { Read(); }), 57);
  EXPECT_EQ(FailureOf([&] { PastProducts(folder_ / "none.db"); }), 53);
}

}  // namespace
}  // namespace ostrel
