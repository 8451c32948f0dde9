// The ring of the last 24 hours by itself, and as a station fills it.
#include "station/last_day.h"

#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

TEST(LastDay, KeepsTheMostAndTheSumsOfEachStretchForADayAndSaysWhereNobodyLooked) {
  LastDay day;
  LastDay::Totals totals{.arrived = 70, .sent = 60, .offAir = 5s};  // before the first look
  day.Note(1000h, {10, 200}, totals);
  totals = {.arrived = 73, .sent = 61, .offAir = 20s};
  day.Note(1000h + 4min, {40, 100}, totals);
  totals.offAir = 13min;
  day.Note(1000h + 16min, {0, 7}, totals);
  ASSERT_EQ(day.stretches().size(), 4U);
  const auto& first = *day.stretches()[0];
  EXPECT_EQ(first.most.urgent, 40);
  EXPECT_EQ(first.most.others, 200);
  EXPECT_EQ(first.within.arrived, 3);
  EXPECT_EQ(first.within.sent, 1);
  EXPECT_EQ(first.within.offAir, 5min) << "no longer than the stretch";
  EXPECT_FALSE(day.stretches()[1] || day.stretches()[2]);
  EXPECT_EQ(day.stretches()[3]->most.others, 7);
  EXPECT_EQ(day.begun(), 1000h + 15min);

  for (auto now = 1000h + 17min; now <= 1000h + 40h; now += 1min) {
    ++totals.sent;
    day.Note(now, {}, totals);
  }
  ASSERT_EQ(day.stretches().size(), 24U * 12 + 1);
  for (std::size_t i = 0; i + 1 < day.stretches().size(); ++i)
    ASSERT_EQ(day.stretches()[i]->within.sent, 5) << i;
}

TEST(LastDay, IsWhatTheStationDidWhateverItsClockSays) {
  VirtualStation station;
  station.Rule(0, "TOR*");
  station.Rule(4, "AFD*");
  station.Rule(11, "JUNK*");
  station.Set({{"CWIDTime", "0"}, {"TxUpTime", "0"}});
  station.Start();
  station.Drop("AFDXXX.TXT", SampleText(9000));
  station.Run(1s);
  station.Drop("TORXXX.TXT", SampleText(700));
  station.Drop("JUNK.TXT", "away");
  station.Run(1min);
  station.machine.clock.StepWallClock(-26h);
  station.Run(4min);  // into the second stretch
  station.machine.line.SetPresent(false);
  station.Run(90s);
  station.machine.clock.StepWallClock(40h);
  station.machine.line.SetPresent(true);
  station.Run(4min);  // into the third
  station.machine.line.SetPresent(false);
  station.Run(20s);

  const auto& day = station.station->lastDay();
  ASSERT_EQ(day.stretches().size(), 3U);
  const auto& first = *day.stretches()[0];
  EXPECT_EQ(first.within.arrived, 3);
  EXPECT_EQ(first.within.sent, 2) << "neither what is thrown away nor the fill text";
  EXPECT_EQ(first.most.others, 9000) << "at the look after a minute";
  EXPECT_LT(first.within.offAir, 3s) << "until it was keyed";
  EXPECT_NEAR(static_cast<double>(day.stretches()[1]->within.offAir.count()), 90'000, 300);
  EXPECT_NEAR(static_cast<double>(day.stretches()[2]->within.offAir.count()), 20'000, 300);
  EXPECT_EQ(day.stretches()[2]->within.arrived, 0);
}

}  // namespace
}  // namespace ostrel
