// What was queued when the station was killed, and comes back at the next start.
#include <algorithm>
#include <gtest/gtest.h>

#include "tests/support/intake_station.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

/// A station at 1200 baud: a block takes ten seconds.
struct KilledStation : IntakeStation {
  /// No shutdown: the process is gone, and what is in the buffer of the line with it.
  void Kill() {
    machine.line.Close();
    machine.dialogs.hasEnded = true;
  }
  void KillAndStart() {
    Kill();
    Restart();
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
  /// The contents of the holding folder of a priority, by name.
  std::map<std::string, std::string> Held(int priority) {
    const auto holding = fmt::format("KvData/RtPri{}", priority);
    std::map<std::string, std::string> contents;
    for (const auto& name : Names(holding)) contents[name] = ReadFile(Path(holding + "/" + name));
    return contents;
  }
};

TEST(PendingFiles, AQueuedFileIsSentWholeAfterAKillAtAnyStageOfItsSending) {
  const auto content = SampleText(2500, 7);
  for (const auto killAfter : {0s, 2s, 12s, 25s, 31s}) {
    KilledStation station;
    station.Start();
    station.Hold(2, "A.TXT", content);
    station.Hold(2, "B.TXT", "behind it");
    station.Run(killAfter);
    EXPECT_EQ(station.Record(), (Lines{"2/A.TXT", "2/B.TXT"})) << "the last block is not out";
    station.KillAndStart();
    EXPECT_EQ(station.Held(2).size(), 2U);
    EXPECT_EQ(station.Names("KvData/RtXmit"), Lines{});
    EXPECT_EQ(station.Queue(2), Lines{}) << "the queues start empty";
    station.machine.line.carried.clear();
    station.Run(80s);
    std::map<std::string, std::string> received;
    for (const auto& product : station.Products()) received[product.name] = product.data;
    EXPECT_EQ(received["A.TXT"], content) << killAfter.count();
    EXPECT_EQ(received["B.TXT"], "behind it") << killAfter.count();
    EXPECT_EQ(station.Record(), Lines{});
    EXPECT_EQ(station.Names("KvData/.pending/back/2"), Lines{});
  }
}

TEST(PendingFiles, OfAProductThatIsOverwrittenOnlyTheNewestComesBack) {
  for (const bool overwrite : {true, false}) {
    KilledStation station;
    station.Set("OverWrite2", overwrite ? "1" : "0");
    station.Start();
    const auto first = SampleText(9000), second = SampleText(8000, 2);
    station.Hold(3, "A.TXT", first);   // goes on the air, so its name is free again
    station.Hold(3, "A.TXT", second);  // waits
    EXPECT_EQ(station.Queue(3), (Lines{"A.TXT", "A.TXT"}));
    EXPECT_EQ(station.Record(), (Lines{"3/A.TXT", "3/A.TXT.1"}));
    station.KillAndStart();
    using Held = std::map<std::string, std::string>;
    EXPECT_EQ(station.Held(3), overwrite ? Held({{"A.TXT.1", second}})
                                         : Held({{"A.TXT", first}, {"A.TXT.1", second}}));
    // Killed again before the first tick, and then a newer one arrives.
    station.KillAndStart();
    station.WriteFile(station.Path("KvData/RtPri3/A.TXT.2"), "newest");
    station.machine.line.carried.clear();
    station.Run(overwrite ? 3min : 5min);
    Lines received;
    for (const auto& product : station.Products()) {
      if (product.name != "FILLFILE.TXT") received.push_back(product.data);
    }
    std::sort(received.begin(), received.end());
    Lines expected = {first, second, "newest"};
    if (overwrite) expected = {second, "newest"};  // the second went on the air before
    EXPECT_EQ(received, expected);
    EXPECT_EQ(station.Record(), Lines{});
  }
}

TEST(PendingFiles, AnArchiveThatComesBackIsNotZippedAgain) {
  KilledStation station;
  station.Set("CompressPri3", "1");
  station.StartBusy();
  station.Hold(4, "C.TXT", SampleText(9000));
  ASSERT_EQ(station.Queue(4), Lines{"C.ZIP"});
  const auto archive = station.ReadFile(station.InTransmitFolder("C.ZIP"));
  station.KillAndStart();
  EXPECT_EQ(station.Held(4), (std::map<std::string, std::string>{{"C.ZIP", archive}}));
  station.Run(kCyclePeriod);
  EXPECT_EQ(station.Queue(4), Lines{"C.ZIP"});
  EXPECT_EQ(station.ReadFile(station.InTransmitFolder("C.ZIP")), archive);
}

TEST(PendingFiles, WhatIsPastThePurgeAgeStaysAway) {
  const struct {
    const char* hours;
    milliseconds down;
    bool comesBack;
  } cases[] = {{"1.5", 89min, true}, {"1.5", 91min, false}, {"0", 1000h, true}, {"-1", 2h, true}};
  for (const auto& [hours, down, comesBack] : cases) {
    KilledStation station;
    station.Set("PurgeTime", hours);
    station.StartBusy();
    station.Hold(5, "A.TXT", "text");
    station.Kill();
    station.machine.clock.Advance(down);
    station.Restart();
    EXPECT_EQ(station.Held(5).size(), comesBack ? 1U : 0U) << hours;
    EXPECT_EQ(station.Record(), Lines{}) << hours;
    EXPECT_EQ(station.Names("KvData/RtXmit"), Lines{}) << hours;
  }
}

TEST(PendingFiles, TheRecordEndsWithTheEntry) {
  KilledStation station;
  station.Set("OverWrite2", "1");
  station.Set("PurgeTime", "0.05");  // three minutes
  station.StartBusy();
  station.Hold(2, "REMOVED.TXT", "text");
  station.Hold(3, "REPLACED.TXT", "text");
  station.Hold(3, "REPLACED.ZIP", "text");
  EXPECT_EQ(station.Record(), (Lines{"1/BUSY.TXT", "2/REMOVED.TXT", "3/REPLACED.ZIP"}));
  station.station->operators().RemoveQueued(Priority(2), {0});
  EXPECT_EQ(station.Record(), (Lines{"1/BUSY.TXT", "3/REPLACED.ZIP"}));
  station.Run(2min);
  station.Hold(1, "BUSY2.TXT", SampleText(60'000));
  station.Hold(4, "LATER.TXT", "text");
  station.Run(2min);  // the purge has been here, and has taken the busy file off the air as well
  EXPECT_EQ(station.Names("KvData/RtXmit"), Lines{"LATER.TXT"});
  const auto record = station.Record();
  EXPECT_EQ(std::count(record.begin(), record.end(), "3/REPLACED.ZIP"), 0);
  EXPECT_EQ(std::count(record.begin(), record.end(), "4/LATER.TXT"), 1);
}

}  // namespace
}  // namespace ostrel
