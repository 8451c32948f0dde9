// From launch to exit: the order of start-up, its failures, and the stop at any moment.
#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

/// The messages of the log, stamps and padding cut.
Lines Messages(VirtualStation& station) {
  auto lines = station.Log();
  for (auto& line : lines) line = line.substr(std::min<std::size_t>(31, line.size()));
  return lines;
}

TEST(StartUp, RunsInItsOrder) {
  VirtualStation station;
  fs::remove_all(station.Path("KvData"));
  fs::create_directory(station.Path("KvData"));
  station.WriteFile(station.Path("KvData/RtPri11"), "a file of that name");
  station.Set("PacketHost", "1");
  auto& machine = station.machine;
  machine.clock.At(100ms, [&] {  // in the key-up delay of the port's opening
    EXPECT_EQ(Messages(station), Lines{"Program Started - 3.0 build 0"});
    EXPECT_TRUE(machine.line.KeyLine1() && machine.line.KeyLine2());
    EXPECT_EQ(station.setup().TimeLeft.Get(), "10");
    EXPECT_FALSE(machine.dialogs.mainIsShown || machine.datagrams.isActive);
  });
  machine.dialogs.setupIsShown = true;
  station.Start();

  EXPECT_EQ(machine.clock.Monotonic(), 300ms);
  EXPECT_TRUE(machine.dialogs.mainIsShown && machine.cycleTimer.IsRunning());
  EXPECT_FALSE(machine.dialogs.setupIsShown);
  EXPECT_EQ(machine.dialogs.placement.left, (19200 - 7875) / 2.0F);
  EXPECT_EQ(machine.dialogs.placement.top, (12000 - 6375) / 2.0F);
  EXPECT_EQ(station.window().lblCompressionRatio.Get(), "Compression = 1:1");
  EXPECT_EQ(station.window().lblThroughput.Get(), "Throughput = 1200 BPS");
  EXPECT_EQ(station.station->engine().TxStart, machine.clock.Now());
  EXPECT_EQ(machine.datagrams.configuration, "QOSFlags=68");
  EXPECT_TRUE(machine.datagrams.isActive);
  for (int n = 1; n <= 11; ++n)
    EXPECT_EQ(fs::is_directory(station.Path("KvData/RtPri" + std::to_string(n))), n != 11) << n;
  EXPECT_TRUE(fs::is_directory(station.Path("KvData/RtXmit")));
  EXPECT_TRUE(fs::is_directory(station.Path("KvData/RtSent")));
  EXPECT_FALSE(fs::exists(station.Path("KvData/RxFiles"))) << "the ingest folder is not ours";
  station.Run(2s);
  EXPECT_EQ(machine.datagrams.sent.at(0).substr(0, 5), "R0001");
}

TEST(StartUp, ASecondInstanceChangesNothing) {
  VirtualStation station;
  station.machine.instance.isFirst = false;
  EXPECT_FALSE(station.station->Start());
  ASSERT_EQ(station.machine.dialogs.messages.size(), 1U);
  EXPECT_EQ(station.machine.dialogs.messages[0].text,
            " The Retransmission Engine Is Already Running");
  EXPECT_EQ(station.machine.dialogs.messages[0].icon, MessageIcon::kStop);
  EXPECT_EQ(station.Names(""), (Lines{"FillFile.txt", "RtMorse.txt"})) << "no log, no store";
  EXPECT_FALSE(station.machine.dialogs.mainIsShown || fs::exists(station.Path("KvData/RtSent")));
}

TEST(StartUp, AFolderThatCannotBeWrittenIsSaidAndEndsIt) {
  VirtualStation station;
  station.machine.instance.failure = Failure(70, "Permission denied: /station/.ostrel.lock");
  EXPECT_FALSE(station.station->Start());
  ASSERT_EQ(station.machine.dialogs.messages.size(), 1U);
  EXPECT_EQ(station.machine.dialogs.messages[0].text,
            "FormLoad: Error # 70, Permission denied: /station/.ostrel.lock, occurred at reference "
            "(unspecified), in Ostrel");
}

TEST(StartUp, ADamagedValueStopsItThereAndTheProgramCanBeClosed) {
  struct Case {
    const char* key;
    const char* value;
    Section section;
    const char* failure;
  };
  constexpr auto kOwn = Section::kSettings, kScreen = Section::kScreen;
  const Case cases[] = {
      {"Engine", "one", kOwn, "13, Type mismatch"},
      {"Engine", "", kOwn, "13, Type mismatch"},
      {"Engine", "40000", kOwn, "6, Overflow"},
      {"UdpPort", "95x", kOwn, "13, Type mismatch"},
      {"UnZipFiles", "yes", kOwn, "13, Type mismatch"},
      {"PacketHost", "on", kOwn, "13, Type mismatch"},
      {"MainTop", "high", kScreen, "13, Type mismatch"},
      {"MainState", "7", kScreen, "380, Invalid property value"},
  };
  for (const auto& [key, value, section, failure] : cases) {
    SCOPED_TRACE(std::string(key) + " = " + value);
    VirtualStation station;
    station.Set(key, value, section);
    EXPECT_TRUE(station.station->Start());
    const auto report =
        std::string("Error # ") + failure + ", occurred at reference (unspecified), in Ostrel";
    EXPECT_EQ(Messages(station), Lines{report});
    EXPECT_EQ(station.LogOf("FormLoad").size(), 1U);
    ASSERT_EQ(station.machine.dialogs.messages.size(), 1U);
    EXPECT_EQ(station.machine.dialogs.messages[0].title, "Ostrel");
    EXPECT_EQ(station.machine.dialogs.messages[0].text, "FormLoad: " + report);
    EXPECT_EQ(station.machine.dialogs.messages[0].icon, MessageIcon::kStop);
    EXPECT_EQ(fs::exists(station.Path("KvData/RtSent")), section == kScreen);
    EXPECT_TRUE(station.machine.line.openings.empty() && station.machine.dialogs.mainIsShown);
    EXPECT_FALSE(station.machine.cycleTimer.IsRunning());
    station.station->operators().Close();
    EXPECT_EQ(Messages(station), (Lines{report, "Program Stopped"}));
    EXPECT_TRUE(station.machine.dialogs.hasEnded);
  }
}

TEST(StartUp, StartsTheIngestProgramThatDoesNotRunYet) {
  struct Case {
    const char* engine;
    const char* window;
    const char* program;
  };
  const Case cases[] = {{"0", "", ""},           {"1", "", "Brask.exe"},
                        {"1", "Brask", ""},      {"1", "Tiltor", "Brask.exe"},
                        {"2", "", "Tiltor.exe"}, {"3", "", ""}};
  for (const auto& [engine, window, program] : cases) {
    VirtualStation station;
    station.Set("Engine", engine);
    if (*window) station.machine.desktop.windows.insert(window);
    station.Start();
    std::vector<Lines> expected;
    if (*program) expected.push_back({station.Path(program), "KvStart"});
    EXPECT_EQ(station.machine.desktop.started, expected) << engine << window;
    station.station->operators().Close();
    EXPECT_EQ(station.machine.desktop.restored, *window ? Lines{window} : Lines{});
  }
}

// A stop request in any wait: the lines drop at that very millisecond, nothing is keyed or written
// after it, and the shutdown runs as ever.
TEST(ShutDown, EndsAnyWaitAtOnce) {
  struct Case {
    const char* where;
    std::map<std::string, std::string> settings;
    milliseconds at;
    std::function<bool(VirtualStation&)> isThere;
  };
  const auto shows = [](const char* text, bool keyed) {
    return [=](VirtualStation& s) {
      return s.window().lblActivefile.Get() == text && s.machine.line.KeyLine1() == keyed;
    };
  };
  const auto drains = [](VirtualStation& s) {
    return !s.machine.cycleTimer.IsRunning() && s.machine.line.BytesWaiting() > 0;
  };
  const auto isStarting = [](VirtualStation& s) { return !s.machine.dialogs.mainIsShown; };
  const Case cases[] = {
      {"the key-up delay of the opening", {}, 100ms, isStarting},
      {"that of the first of several openings", {{"ComData", "7"}}, 100ms, isStarting},
      {"the drain", {{"CWIDTime", "1"}, {"ComBaud", "2400"}}, 30500ms, drains},
      {"a dash", {{"CWIDTime", "1"}}, 31000ms, shows("Station ID", true)},
      {"a gap", {{"CWIDTime", "1"}}, 30600ms, shows("Station ID", false)},
      {"a pause", {{"TxUpTime", "1"}}, 125s, shows("Paused", false)},
      {"the key-up delay after it", {{"TxUpTime", "1"}}, 131200ms, shows("Paused", true)},
  };
  for (const auto& [where, settings, at, isThere] : cases) {
    SCOPED_TRACE(where);
    VirtualStation station;
    auto& machine = station.machine;
    station.Set("ComBaud", "38400");
    station.Set("CWIDText", "TTTTTTTT");
    station.Set("PacketHost", "1");
    for (const auto& [key, value] : settings) station.Set(key, value);
    machine.line.onWrite = [&](std::string_view) { EXPECT_FALSE(machine.clock.stopRequested); };
    std::size_t changes = 0;
    machine.clock.At(at, [&] {
      EXPECT_TRUE(isThere(station));
      changes = machine.line.keying.size();
      machine.loop.RequestStop();
    });
    station.Start();
    station.Run(at + 10s - machine.clock.Monotonic());

    for (std::size_t i = changes; i < machine.line.keying.size(); ++i) {
      EXPECT_FALSE(machine.line.keying[i].on);
      EXPECT_LE(machine.line.keying[i].at, at + 1ms);
    }
    EXPECT_FALSE(machine.line.KeyLine1() || machine.line.KeyLine2() || machine.line.IsOpen());
    EXPECT_FALSE(machine.cycleTimer.IsRunning() || machine.purgeTimer.IsRunning());
    EXPECT_TRUE(machine.dialogs.hasEnded);
    EXPECT_EQ(Messages(station).back(), "Program Stopped");
    EXPECT_EQ(station.Get("MainState", Section::kScreen), "0");
    // The channel opens at the end of start-up only.
    if (at > 1s) {
      EXPECT_EQ(machine.datagrams.sent.back(), "E0000");
    }
    EXPECT_FALSE(machine.datagrams.isActive);
  }
}

TEST(ShutDown, GoesOnWhenAStepFailsAndSaysNothingToAPacketHostThatIsOff) {
  VirtualStation station;
  station.Start();
  station.machine.line.lineFails = true;
  station.station->operators().Exit();
  EXPECT_FALSE(station.machine.line.IsOpen() || station.machine.line.KeyLine1());
  EXPECT_EQ(station.LogOf("Shutdown").size(), 2U);
  EXPECT_EQ(Messages(station).back(), "Program Stopped");
  EXPECT_TRUE(station.machine.dialogs.hasEnded);
  EXPECT_TRUE(station.machine.datagrams.sent.empty());
}

TEST(ShutDown, AMinimizedWindowKeepsItsLastPlace) {
  VirtualStation station;
  station.Start();
  station.machine.dialogs.placement = {100, 200, 9000, 7000.5F, WindowState::kMaximized};
  station.Restart();
  EXPECT_EQ(station.machine.dialogs.placement.state, WindowState::kMaximized);
  station.machine.dialogs.placement = {-32000, -32000, 100, 50, WindowState::kMinimized};
  station.Restart();
  const auto& placement = station.machine.dialogs.placement;
  EXPECT_EQ(placement.left, 100);
  EXPECT_EQ(placement.top, 200);
  EXPECT_EQ(placement.width, 9000);
  EXPECT_EQ(placement.height, 7000.5F);
  EXPECT_EQ(placement.state, WindowState::kMinimized);
}

TEST(Purge, DeletesWhatIsOlderThanTheLimitThatStartUpFound) {
  for (const bool hasLimit : {true, false}) {
    VirtualStation station;
    station.Set("PurgeTime", hasLimit ? "2.5 hours" : "soon");
    station.Set("IngestPath", "");
    station.Start();
    station.setup().txtPurgeTime.Set("0.001");  // in force at the next start
    const auto make = [&](const std::string& name, milliseconds age) {
      station.WriteFile(station.Path("KvData/" + name), "x");
      station.realFiles.SetLastWriteTime(station.Path("KvData/" + name),
                                         station.machine.clock.UtcNow() - age);
    };
    for (const std::string folder : {"RtSent/", "RtXmit/", "RtPri1/"}) {
      make(folder + "DUE.TXT", 150min);
      make(folder + "YOUNG.TXT", 147min);
    }
    station.Run(61s);
    const Lines both = {"DUE.TXT", "YOUNG.TXT"}, left = {"YOUNG.TXT"};
    EXPECT_EQ(station.Names("KvData/RtSent"), hasLimit ? left : both);
    EXPECT_EQ(station.Names("KvData/RtXmit"), hasLimit ? left : both);
    EXPECT_EQ(station.Names("KvData/RtPri1"), both);
  }
}

}  // namespace
}  // namespace ostrel
