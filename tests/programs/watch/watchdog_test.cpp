// When a station counts as hanging, and how soon it may be started again.
#include "programs/watch/watchdog.h"

#include <gtest/gtest.h>

namespace ostrel {
namespace {

using namespace std::chrono_literals;

TEST(Watchdog, WaitsAsLongAsTheStationSaidAndNoLonger) {
  Watchdog watchdog({.answer = 10s, .start = 120s, .startsAnHour = 2});
  watchdog.Started(0s);
  EXPECT_FALSE(watchdog.Hangs(120s));
  EXPECT_TRUE(watchdog.Hangs(121s)) << "never up";
  watchdog.Answered(100s);
  EXPECT_FALSE(watchdog.Hangs(110s));
  EXPECT_TRUE(watchdog.Hangs(111s));
  watchdog.Silent(105s, 60s);
  EXPECT_FALSE(watchdog.Hangs(175s));
  EXPECT_TRUE(watchdog.Hangs(176s));
  EXPECT_EQ(watchdog.NextStart(180s), 180s);
  watchdog.Started(180s);
  EXPECT_EQ(watchdog.NextStart(200s), 3600s) << "two in the last hour";
  watchdog.Started(3600s);
  EXPECT_EQ(watchdog.NextStart(3700s), 3780s);
}

}  // namespace
}  // namespace ostrel
