// The times that operators write.
#include "programs/queue/moment.h"

#include <cstdlib>
#include <gtest/gtest.h>

#include "tests/support/failure_of.h"

namespace ostrel {
namespace {

using namespace std::chrono_literals;
using std::chrono::sys_days;
using std::chrono::year;

TEST(MomentIn, IsTheOneThatAnOperatorMeans) {
  setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
  const UtcTime now = sys_days(year(2026) / 11 / 26) + 4h + 54min;  // 05:54 in Berlin
  const std::tuple<const char*, UtcTime, std::chrono::hours> rows[] = {
      // text, the first such moment, how much later the last one is
      {"22:00", now - 7h - 54min, 0h},
      {"5:54", now, 0h},
      {"12h", now - 12h, 0h},
      {"2026-11-26", now - 5h - 54min, 0h},
      {"today", now - 5h - 54min, 0h},
      {"yesterday", now - 29h - 54min, 0h},
      {"2026-11-26T05:00:00Z", now + 6min, 0h},
      {"2026-07-01 14:30:10", sys_days(year(2026) / 7 / 1) + 12h + 30min + 10s, 0h},
      {"2026-10-25 02:20", sys_days(year(2026) / 10 / 25) + 20min, 1h},
      {"2026-03-29 02:30", sys_days(year(2026) / 3 / 29) + 90min, 0h},  // 03:30: there is none
  };
  for (const auto& [text, first, later] : rows) {
    EXPECT_EQ(MomentIn(text, now, Which::kFirst), first) << text;
    EXPECT_EQ(MomentIn(text, now, Which::kLast), first + later) << text;
  }
  for (const auto* text : {"14", "2026", "2026-11-31", "24:00", "2026-11-26 ", "Z", "14:30x"})
    EXPECT_EQ(FailureOf([&] { MomentIn(text, now, Which::kFirst); }), 13) << text;
  unsetenv("TZ");
}

}  // namespace
}  // namespace ostrel
