// What the station's history knows of products that were, read from its file: the station itself is
// not asked, and need not run.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/time.h"
#include "platform/linux/sqlite_database.h"

namespace ostrel {

struct PastProduct {
  std::int64_t id = 0;
  std::string name, sentAs;
  std::optional<std::int64_t> priority, size;
  std::string hash;
  UtcTime arrived{};
  std::optional<UtcTime> firstBlock, lastBlock, ended;
  std::int64_t timesSent = 0;  // of this row alone: a resend has its own
  std::string fate;
  std::optional<std::int64_t> archive, resendOf;
};

/// Whether that names a product by its number.
bool IsNumber(const std::string& text);

struct PastFilter {
  std::string pattern;                  // of names, as in a rule; all of them when empty
  std::optional<UtcTime> since, until;  // it was on its way at some moment between
};

/// Where the history of the station in `folder` lies.
std::string HistoryPath(const std::string& folder);

class PastProducts {
 public:
  /// Throws Failure when there is no such history or nothing of it can be read. It may be one that
  /// was damaged.
  explicit PastProducts(const std::string& path);

  static constexpr int kPart = 1000;  // products
  using Take = std::function<void(const std::vector<PastProduct>& part)>;
  /// Calls `take` with what there is, at most kPart at a time, in the order of arrival by the
  /// station's count, which no clock disturbs. Returns in how many places damage hides products.
  int Find(const PastFilter& filter, const Take& take) const;
  /// The one of that number, or the last that was sent or received under that name.
  std::optional<PastProduct> FindOne(const std::string& numberOrName) const;
  /// Whether it, or another sending of it, began between the two under the name that it was sent
  /// as.
  bool HasBegun(const PastProduct& product, UtcTime from, UtcTime to) const;
  /// Its bytes as they were received, where they are kept. Throws Failure when they are damaged.
  std::optional<std::string> ContentOf(std::int64_t id) const;

 private:
  SqliteDatabase database_;
};

}  // namespace ostrel
