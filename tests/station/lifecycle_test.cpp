// From launch to exit: the failures of start-up, the stop at any moment, what was queued when the
// station was killed, and the purge.
#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

TEST(StartUp, ASecondInstanceOrAFolderThatCannotBeWrittenEndsItAndChangesNothing) {
  const auto endsUnchanged = [](VirtualStation& station) {
    EXPECT_TRUE(station.machine.dialogs.hasEnded);
    EXPECT_EQ(station.Names(""), (Lines{"FillFile.txt", "RtMorse.txt"})) << "no log, no store";
  };
  const auto attempt = [&](VirtualStation& station) {
    EXPECT_FALSE(station.station->Start());
    EXPECT_FALSE(station.machine.dialogs.hasEnded) << "the message waits to be read";
    station.machine.instance.failure ? station.station->Stop()
                                     : station.machine.dialogs.Answer(MessageAnswer::kOk);
    endsUnchanged(station);
    return station.machine.dialogs.messages.at(0).text;
  };
  VirtualStation second, unwritable, stoppedAtOnce;
  stoppedAtOnce.machine.loop.RequestStop();
  EXPECT_TRUE(stoppedAtOnce.station->Start());
  endsUnchanged(stoppedAtOnce);
  second.machine.instance.isFirst = false;
  EXPECT_EQ(attempt(second), " The Retransmission Engine Is Already Running");
  unwritable.machine.instance.failure = Failure(70, "Permission denied: /station/.ostrel.lock");
  EXPECT_EQ(attempt(unwritable),
            "FormLoad: Error # 70, Permission denied: /station/.ostrel.lock, occurred at reference "
            "(unspecified), in Ostrel");
}

TEST(StartUp, ADamagedValueStopsItThereAndTheProgramCanBeClosed) {
  const struct {
    const char *key, *value;
    Section section;
    const char* failure;
  } cases[] = {{"Engine", "", Section::kSettings, "13, Type mismatch"},
               {"Engine", "40000", Section::kSettings, "6, Overflow"},
               {"MainWidth", "1e300", Section::kScreen, "6, Overflow"},
               {"MainState", "7", Section::kScreen, "380, Invalid property value"}};
  for (const auto& [key, value, section, failure] : cases) {
    SCOPED_TRACE(std::string(key) + " = " + value);
    VirtualStation station;
    station.Set(key, value, section);
    EXPECT_FALSE(station.station->Start());
    const auto report =
        std::string("Error # ") + failure + ", occurred at reference (unspecified), in Ostrel";
    ASSERT_EQ(station.machine.dialogs.messages.size(), 1U);
    EXPECT_EQ(station.machine.dialogs.messages[0].text, "FormLoad: " + report);
    EXPECT_EQ(fs::exists(station.Path("KvData/RtSent")), section == Section::kScreen);
    EXPECT_TRUE(station.machine.line.openings.empty() && station.machine.dialogs.mainIsShown);
    station.station->actions().Close();
    EXPECT_EQ(station.Messages(), (Lines{report, "Program Stopped"}));
    EXPECT_TRUE(station.machine.dialogs.hasEnded);
  }
}

TEST(StartUp, SetupAfterOneThatFailedCostsNoRuleNoSettingAndKeysNothing) {
  for (const bool isUnmounted : {true, false}) {
    VirtualStation station;
    auto& messages = station.machine.dialogs.messages;
    station.Rule(0, "TOR*");
    station.Set({{"IngestPath", "/in"}, {"OverWrite3", "1"}, {"UnZipFiles", "1"}});
    station.Set({{"ComParity", "E"}, {"LogSize", "70000"}, {"Engine", "1"}});
    station.Set("MainLeft", "900", Section::kScreen);
    if (isUnmounted) {
      fs::remove_all(station.Path("KvData"));
      fs::create_directory_symlink(station.Path("disk"), station.Path("KvData"));
    } else {
      station.Set("Engine", "");
    }
    EXPECT_FALSE(station.station->Start());
    EXPECT_EQ(messages.size(), 1U);
    messages.clear();
    const auto before = OpenAtRoot(station.stores)->List(kFamilyTree);
    auto& actions = station.station->actions();
    actions.ShowSetup();
    EXPECT_EQ(actions.LeaveSetup(), SaveOutcome::kHidden);
    actions.StepPort(Button::kLeft);
    EXPECT_TRUE(station.machine.line.openings.empty());
    actions.Exit();
    EXPECT_EQ(messages.size(), isUnmounted ? 0U : 1U);
    EXPECT_TRUE(isUnmounted ||
                messages[0].text == "These settings could not be loaded: Engine (Type mismatch).");
    messages.clear();

    fs::create_directory(station.Path("disk"));
    station.Restart();
    EXPECT_EQ(Entries(station.setup().SetupPriList[0]), Lines{"TOR*"});
    for (const auto& [path, key, value, isRaw] : before)
      EXPECT_EQ(OpenAtRoot(station.stores)->ReadSetting(path, key, ""), value == "" ? "0" : value);
  }
}

TEST(StartUp, ADailyLogKeepsWhatIsBehindIt) {
  for (const char* const engine : {"0", "no number"}) {
    VirtualStation station;
    station.Set("LogDaily", "1", Section::kShared);
    station.Set("Engine", engine);
    station.WriteFile(station.Path("RtLog.txt"), std::string(150'000, '\n'));
    EXPECT_EQ(station.station->Start(), engine == std::string("0"));
    EXPECT_FALSE(fs::exists(station.Path("RtLog.old"))) << engine;
  }
}

TEST(StartUp, AStationThatRanBeforeTellsThatItsSettingsAreLost) {
  VirtualStation station;
  station.Start();
  station.Restart();
  EXPECT_TRUE(station.LogOf("Settings").empty());
  station.station->Stop();
  fs::resize_file(station.Path("KvRegistry.db"), 0);
  station.Restart();
  EXPECT_EQ(station.LogOf("Settings").size(), 1U);
}

TEST(ShutDown, DropsTheLinesWithinATickInWhateverMomentItIsAskedFor) {
  // Through the opening, two identifications and a pause, draining, keying, waiting.
  for (milliseconds at = 100ms; at < 140s; at += 2903ms) {
    SCOPED_TRACE(at.count());
    VirtualStation station;
    auto& machine = station.machine;
    station.Set({{"ComBaud", "38400"}, {"CWIDText", "TTTTTTTT"}, {"PacketHost", "1"}});
    station.Set({{"CWIDTime", "1"}, {"TxUpTime", "1"}, {"CWSpeed", "10"}});
    machine.line.onWrite = [&](std::string_view) { EXPECT_FALSE(machine.clock.stopRequested); };
    machine.clock.At(at, [&] {
      machine.line.keying.clear();
      machine.loop.RequestStop();
    });
    station.Start();
    station.Run(at + 10s - machine.clock.Monotonic());
    for (const auto& event : machine.line.keying)
      EXPECT_TRUE(!event.on && event.at <= at + kCyclePeriod);
    EXPECT_FALSE(machine.line.KeyLine1() || machine.line.KeyLine2() || machine.line.IsOpen() ||
                 machine.datagrams.isActive);
    EXPECT_EQ(station.Messages().front(), "Program Started - 3.0 build 0");
    EXPECT_EQ(station.Messages().back(), "Program Stopped");
    // The channel opens at the end of start-up only.
    EXPECT_TRUE(at < 1s || machine.datagrams.sent.back() == "E0000");
  }
}

TEST(EntryRecords, WhatIsPastThePurgeAgeStaysAway) {
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
    for (const auto* place : {"KvData/.pending/5/", "KvData/RtSent/"})
      station.WriteFile(station.Path(place) + ".ostrel-1-1.part", "half a file");
    station.Restart();
    for (const auto* place : {"KvData/.pending/5/", "KvData/RtSent/"})
      EXPECT_FALSE(fs::exists(station.Path(place) + ".ostrel-1-1.part")) << place;
    EXPECT_EQ(station.Names("KvData/RtPri5"), comesBack ? Lines{"A.TXT"} : Lines{}) << hours;
    EXPECT_EQ(station.Names("KvData/.pending/5"), Lines{}) << hours;
  }
}

TEST(Purge, DeletesWhatIsOlderThanTheLimitThatStartUpFound) {
  for (const bool hasLimit : {true, false}) {
    VirtualStation station;
    station.Set({{"PurgeTime", hasLimit ? "2.5 hours" : "soon"}, {"IngestPath", ""}});
    station.Start();
    station.setup().txtPurgeTime.Set("0.001");  // in force at the next start
    for (const std::string folder : {"KvData/RtSent", "KvData/RtXmit", "KvData/RtPri1"}) {
      for (const auto& [name, age] : {std::pair{"/DUE", 150min}, {"/YOUNG", 147min}}) {
        station.WriteFile(station.Path(folder + name), "x");
        station.realFiles.SetLastWriteTime(station.Path(folder + name), kNoon - age);
      }
    }
    for (const auto* name : {"DUE", "YOUNG"})
      station.station->queue().Add(Priority(2), {name}, station.Path(name));
    station.Run(61s);
    const Lines both = {"DUE", "YOUNG"}, left = hasLimit ? Lines{"YOUNG"} : both;
    EXPECT_EQ(station.Names("KvData/.pending/2"), left);
    EXPECT_EQ(station.Queue(2), both) << "its turn tells";
    EXPECT_EQ(station.Names("KvData/RtSent"), left);
    EXPECT_EQ(station.Names("KvData/RtXmit"), left);
    EXPECT_EQ(station.Names("KvData/RtPri1"), both);
  }
}

}  // namespace
}  // namespace ostrel
