#include <gtest/gtest.h>
#include <set>

#include "base/failure.h"
#include "base/names.h"
#include "base/numbers.h"
#include "base/time.h"
#include "tests/support/failure_of.h"

namespace ostrel {
namespace {

TEST(Names, OfProductsAndTheirNumberedCopies) {
  const auto next = [](const std::string& name, const std::set<std::string>& taken) {
    return FirstFreeName(name, [&](const std::string& n) { return taken.contains(n); });
  };
  EXPECT_EQ(next("A.TXT.1", {"A.TXT", "A.TXT.1", "A.TXT.2"}), "A.TXT.3");
  EXPECT_EQ(next("ABC", {"ABC", "ABC.1"}), "ABC.1.2");
  EXPECT_EQ(StripDupSuffix("ABC.1"), "ABC.1");
  EXPECT_TRUE(IsNumberedCopy("A.TXT.12"));
  EXPECT_FALSE(IsNumberedCopy("A.TXT.012"));
}

TEST(Numbers, EachReadingForgivesInItsOwnWay) {
  const std::tuple<const char*, double, bool> cases[] = {
      {" 12.5 ", 12.5, true}, {"-3", -3, true},    {"9 minutes", 9, false}, {"", 0, false},
      {".5", .5, true},       {"1e3", 1000, true}, {"inf", 0, false},       {"--1", 0, false}};
  for (const auto& [text, leading, isNumber] : cases) {
    EXPECT_EQ(LeadingNumber(text), leading) << text;
    EXPECT_EQ(IsNumber(text), isNumber) << text;
  }
  EXPECT_EQ(LeadingInteger("2.5"), 2);
  EXPECT_EQ(FormatRounded(2.123456, 4) + " " + FormatRounded(1, 4), "2.1235 1");
  EXPECT_EQ(LeadingInteger("1e99"), 2147483647);
  EXPECT_EQ(LeadingMilliseconds("-300").count(), 0);
  EXPECT_EQ(FormatPlain(100000.123456789) + " " + FormatPlain(1e21) + " " + FormatPlain(7305.1F),
            "100000.123456789 1000000000000000000000 7305.1");
  EXPECT_EQ(StrictInteger("-2147483648"), INT32_MIN);
  EXPECT_EQ(FailureOf([] { StrictInteger("2147483648"); }), failure_number::kOverflow);
  EXPECT_TRUE(StrictBoolean("true"));
  EXPECT_TRUE(StrictBoolean("-1"));
  for (const auto* text : {"", "yes", "1x"}) {
    EXPECT_THROW(StrictInteger(text), Failure) << text;
    EXPECT_THROW(StrictBoolean(text), Failure) << text;
  }
}

TEST(Times, HaveTheReceiversFormat) {
  using namespace std::chrono_literals;
  const LocalTime day = std::chrono::local_days(2003y / 10 / 27);
  EXPECT_EQ(FormatGeneral(day + 16h + 28min + 30s), "10/27/2003 4:28:30 PM");
  EXPECT_EQ(FormatGeneral(day), "10/27/2003");
  EXPECT_EQ(FormatGeneral(day - 24h * 20 + 1s), "10/7/2003 12:00:01 AM");
}

}  // namespace
}  // namespace ostrel
