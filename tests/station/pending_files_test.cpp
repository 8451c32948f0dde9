// What was queued when the station was killed, and comes back at the next start.
#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

TEST(PendingFiles, WhatIsPastThePurgeAgeStaysAway) {
  for (const auto& [hours, down, comesBack] :
       {std::tuple{"1.5", 89min, true}, {"1.5", 91min, false}, {"0", 60'000min, true}}) {
    VirtualStation station;
    station.Set("PurgeTime", hours);
    station.StartBusy();
    station.Hold(5, "A.TXT", "text");
    EXPECT_EQ(station.Names("KvData/.pending/5"), Lines{"A.TXT"});
    // No shutdown: the process is gone.
    station.machine.line.Close();
    station.machine.dialogs.hasEnded = true;
    station.machine.clock.Advance(down);
    station.Restart();
    EXPECT_EQ(station.Names("KvData/RtPri5"), comesBack ? Lines{"A.TXT"} : Lines{}) << hours;
    EXPECT_EQ(station.Names("KvData/.pending/5"), Lines{}) << hours;
  }
}

}  // namespace
}  // namespace ostrel
