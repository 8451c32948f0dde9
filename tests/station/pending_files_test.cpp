// What was queued when the station was killed, and comes back at the next start.
#include <algorithm>
#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

using Contents = std::map<std::string, std::string>;

/// A station at 1200 baud: a block takes ten seconds.
struct KilledStation : VirtualStation {
  /// No shutdown: the process is gone, and what is in the buffer of the line with it.
  void KillAndStart(milliseconds down = 0s) {
    machine.line.Close();
    machine.dialogs.hasEnded = true;
    machine.clock.Advance(down);
    Restart();
    machine.line.carried.clear();
  }
  /// The record, as "priority/name", fill files aside.
  Lines Record() {
    Lines names;
    for (int p = 1; p <= kPriorityCount; ++p) {
      for (const auto& name : Names(fmt::format("KvData/.pending/{}", p)))
        if (!name.starts_with("FILLFILE")) names.push_back(fmt::format("{}/{}", p, name));
    }
    return names;
  }
  /// What lies in the holding folder of a priority, by name.
  Contents Held(int priority) {
    Contents contents;
    for (const auto& name : Names(fmt::format("KvData/RtPri{}", priority)))
      contents[name] = ReadFile(Holding(priority, name));
    return contents;
  }
};

TEST(PendingFiles, OfAProductThatIsOverwrittenOnlyTheNewestComesBack) {
  for (const bool overwrite : {true, false}) {
    KilledStation station;
    station.Set("OverWrite2", overwrite ? "1" : "0");
    station.Start();
    const auto first = SampleText(9000), second = SampleText(8000, 2);
    station.Hold(3, "A.TXT", first);   // goes on the air, so its name is free again
    station.Hold(3, "A.TXT", second);  // waits
    EXPECT_EQ(station.Record(), (Lines{"3/A.TXT", "3/A.TXT.1"}));
    station.KillAndStart();
    station.KillAndStart();  // again before the first tick, and then a newer one arrives
    EXPECT_EQ(station.Held(3), overwrite ? Contents({{"A.TXT.1", second}})
                                         : Contents({{"A.TXT", first}, {"A.TXT.1", second}}));
    station.WriteFile(station.Holding(3, "A.TXT.2"), "newest");
    station.Run(5min);
    Lines received;
    for (const auto& product : station.Products()) received.push_back(product.data);
    std::sort(received.begin(), received.end());
    Lines expected = {first, second, "newest"};
    if (overwrite) expected = {second, "newest"};  // the second went on the air before
    EXPECT_EQ(received, expected);
    EXPECT_EQ(station.Record(), Lines{});
  }
}

TEST(PendingFiles, WhatIsPastThePurgeAgeStaysAway) {
  for (const auto& [hours, down, comesBack] :
       {std::tuple{"1.5", 89min, true}, {"1.5", 91min, false}, {"0", 60'000min, true}}) {
    KilledStation station;
    station.Set("PurgeTime", hours);
    station.StartBusy();
    station.Hold(5, "A.TXT", "text");
    station.KillAndStart(down);
    EXPECT_EQ(station.Held(5).size(), comesBack ? 1U : 0U) << hours;
    EXPECT_EQ(station.Record(), Lines{}) << hours;
  }
}

}  // namespace
}  // namespace ostrel
