// A station whose settings store was damaged, or is gone: on the air with its own settings, or not
// at all.
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <random>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

/// Its settings were stored by its setup dialog and by the settings tool, and it was ended.
struct StoredStation : VirtualStation {
  StoredStation() {
    Set("UdpPort", "9999");
    Start();
    station->actions().ShowSetup();
    setup().CWidenty.Set("DE KX1ABC");
    setup().lblOutBaud.Set("9600");
    Leave();
    station->Stop();
    content = ReadFile(store);
  }
  void Leave() { EXPECT_EQ(station->actions().LeaveSetup(), SaveOutcome::kHidden); }
  void Lay(const std::string& bytes) { std::ofstream(store, std::ios::binary) << bytes; }
  /// Another run. Whether it is on the air, which it is with its own settings alone.
  bool StartsAgain() {
    machine.dialogs.messages.clear();
    machine.line.keying.clear();
    MakeAnew();
    const bool starts = station->Start();
    Run(1s);
    EXPECT_EQ(machine.line.keying.empty(), !starts);
    EXPECT_EQ(setup().CWidenty.Get() == "DE KX1ABC", starts);
    EXPECT_EQ(setup().lblOutBaud.Get() == "9600", starts);
    EXPECT_EQ(station->values().udpPort == 9999, starts);
    return starts;
  }

  std::string store = Path("KvRegistry.db"), copy = Path("KvRegistry.copy.db"), content;
};

TEST(LostSettings, AreThoseOfTheCopyAgainOrTheStationStaysOffTheAirAndSaysWhatToDo) {
  std::mt19937 chance(1118);
  std::vector<std::function<void(StoredStation&)>> damages = {
      [](auto& s) { fs::create_directory(s.store); },
      [](auto& s) { fs::create_symlink("elsewhere", s.store); },
      [](auto&) {},
      [&](auto& s) {
        for (int i = 0; i < 1000; ++i)
          s.content[chance() % s.content.size()] = static_cast<char>(chance());
        s.Lay(s.content);
      },
  };
  for (std::size_t tenth = 0; tenth < 10; ++tenth)
    damages.emplace_back(
        [=](auto& s) { s.Lay(s.content.substr(0, s.content.size() / 10 * tenth)); });
  for (std::size_t i = 0; i < damages.size(); ++i) {
    SCOPED_TRACE(i);
    StoredStation station;
    fs::remove(station.store);
    damages[i](station);
    const bool isThere = fs::exists(fs::symlink_status(station.store));
    ASSERT_TRUE(station.StartsAgain());
    const auto restored = station.station->figures().restored;
    ASSERT_TRUE(restored);
    EXPECT_EQ(station.Messages("Settings"), Lines{restored->text});
    EXPECT_EQ(restored->text.find("It is kept as KvRegistry.damaged-") != std::string::npos,
              isThere);
    EXPECT_TRUE(station.StartsAgain());
    EXPECT_FALSE(station.station->figures().restored) << "it is over with the next start";
    EXPECT_EQ(VirtualStation::ReadFile(station.copy), VirtualStation::ReadFile(station.store));

    station.station->Stop();
    fs::remove(station.store);
    damages[i](station);
    fs::remove(station.copy);
    if (i % 2 == 0) fs::create_directory(station.copy);  // none, or none that is good
    EXPECT_FALSE(station.StartsAgain());
    ASSERT_EQ(station.machine.dialogs.messages.size(), 1U);
    EXPECT_NE(station.machine.dialogs.messages[0].text.find("ostrel-settings apply FILE"),
              std::string::npos);
    // Nor do the defaults come in by the dialog that shows them, or by the end.
    station.machine.dialogs.messages.clear();
    station.station->actions().ShowSetup();
    ASSERT_EQ(station.machine.dialogs.messages.size(), 1U);
    station.setup().chkShowErrors.Set(Check::kUnchecked);
    station.station->actions().ShowErrorsClicked();
    station.Leave();
    station.station->actions().Close();
    EXPECT_FALSE(station.StartsAgain());
  }
}

TEST(LostSettings, ANewStationHasNoneAndIsNotAskedForThem) {
  VirtualStation station;
  station.Rule(0, "TOR*");
  station.WriteFile(station.Path("RtLog.txt"), "11/18/26 16:29:18 Settings     by a tool\r\n");
  station.Start();
  EXPECT_EQ(station.setup().lblOutBaud.Get(), "1200");
  // It is killed before anything is stored: an empty store is not a lost one.
  station.machine.line.Close();
  station.machine.dialogs.hasEnded = true;
  station.Restart();
  EXPECT_FALSE(station.station->figures().restored);
}

TEST(LostSettings, AreMissedByWhatAnEarlierRunHasLeft) {
  const std::function<void(StoredStation&)> traces[] = {
      [](auto& s) { s.WriteFile(s.Path("KvHistory.db"), ""); },
      [](auto& s) {
        s.WriteFile(s.Path("RtLog.txt"),
                    "11/18/26 16:29:18 Ostrel       Program Started - 3.0 build 0\r\n");
      },
      [](auto& s) { s.WriteFile(s.Path("RtLog.old"), std::string(kLargestText + 1, '\n')); },
      [](auto& s) { s.WriteFile(s.copy, "damaged"); },
      [](auto& s) { s.WriteFile(s.Path("KvRegistry.damaged-2026-11-18-120000.db"), "damaged"); },
  };
  for (std::size_t i = 0; i < std::size(traces); ++i) {
    SCOPED_TRACE(i);
    StoredStation station;
    for (const auto* name : {"KvRegistry.db", "KvRegistry.copy.db", "RtLog.txt"})
      fs::remove(station.Path(name));
    traces[i](station);
    EXPECT_FALSE(station.StartsAgain());
  }
}

TEST(LostSettings, AreMissedWhileTheStationRunsBeforeAnythingIsStored) {
  StoredStation station;
  station.Restart();
  fs::remove(station.store);
  station.setup().txtTxDelay.Set("400");
  station.Leave();
  EXPECT_TRUE(station.station->figures().restored);
  EXPECT_TRUE(station.StartsAgain()) << "what no field holds came from the copy";
  EXPECT_EQ(station.setup().txtTxDelay.Get(), "400");
}

TEST(LostSettings, TheCopyIsLaidOnceADayWhereNothingIsSaved) {
  StoredStation station;
  station.Restart();
  station.machine.cycleTimer.Stop();  // nothing is sent meanwhile
  fs::remove(station.copy);
  station.Run(std::chrono::hours(23));
  EXPECT_FALSE(fs::exists(station.copy));
  station.Run(std::chrono::hours(2));
  EXPECT_EQ(VirtualStation::ReadFile(station.copy), VirtualStation::ReadFile(station.store));
  fs::remove(station.copy);
  fs::create_directory(station.copy);
  station.Run(std::chrono::hours(25));
  ASSERT_EQ(station.Messages("Settings").size(), 1U);
  EXPECT_TRUE(
      station.Messages("Settings")[0].starts_with("No copy of the settings store was made"));
}

}  // namespace
}  // namespace ostrel
