// The station identifies itself in Morse, at its interval and on demand.
#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

using Times = std::vector<long long>;

/// At what times line `line` changed from the first drop on, in milliseconds since that drop; it
/// goes off, on, off, on...
Times ChangesSinceDrop(const VirtualStation& station, int line) {
  Times times;
  milliseconds drop{-1};
  for (const auto& event : station.machine.line.keying) {
    if (event.line != line || (drop.count() < 0 && event.on)) continue;
    if (drop.count() < 0) drop = event.at;
    EXPECT_EQ(event.on, times.size() % 2 == 1);
    times.push_back((event.at - drop).count());
  }
  return times;
}

TEST(Identification, KeysTheWorkedExampleToTheMillisecond) {
  VirtualStation station;
  station.Set({{"CWIDText", "De e"}, {"CWIDTime", "1"}, {"ComBaud", "38400"}, {"LogProgram", "1"}});
  station.Start();
  milliseconds lastWrite{0};
  auto& clock = station.machine.clock;
  station.machine.line.onWrite = [&](std::string_view) {
    EXPECT_NE(station.window().lblActivefile.Get(), "Station ID");
    if (station.setup().LastId.Get().empty()) lastWrite = clock.Monotonic();
  };
  clock.At(31s, [&] {
    EXPECT_EQ(station.window().lblActivefile.Get(), "Station ID");
    EXPECT_EQ(station.window().lblActivefileBackColor.Get(), Shade::kRed);
    EXPECT_FALSE(station.machine.cycleTimer.IsRunning());
  });
  station.Run(40s);

  // A dot is 40 ms: two gaps, D, E, the blank, E, the closing gap.
  const Times expected = {0, 400, 520, 560, 600, 640, 680, 840, 880, 1320, 1360, 1800};
  EXPECT_EQ(ChangesSinceDrop(station, 1), expected);
  EXPECT_EQ(ChangesSinceDrop(station, 2), expected);
  // A packet takes 319.7 ms; it has left the port when the transmitter drops, and no more than it.
  const auto drained = (station.machine.line.keying[2].at - lastWrite).count();
  EXPECT_GE(drained, 320);
  EXPECT_LE(drained, 335);
  EXPECT_EQ(station.setup().LastId.Get(), "11/18/2026 12:00:30 PM");
  EXPECT_EQ(station.LogOf("CW ID"), Lines{"11/18/26 12:00:32 CW ID         Sent - DE E"});
}

TEST(Identification, AFailureGivesEverythingBackAndBeginsTheCountdownAgain) {
  VirtualStation station;
  station.Set({{"CWIDTime", "1"}, {"ComBaud", "38400"}});
  station.Start();
  std::filesystem::remove(station.Path("RtMorse.txt"));
  station.Run(45s);
  ASSERT_EQ(station.LogOf("Timer").size(), 1U);
  EXPECT_TRUE(station.LogOf("Timer")[0].starts_with(
      "11/18/26 12:00:30 Timer        Error # 53, File not found"));
  station.station->actions().SendMorseId();
  EXPECT_TRUE(station.machine.line.KeyLine1() && station.machine.line.KeyLine2());
  EXPECT_TRUE(station.machine.cycleTimer.IsRunning());
  EXPECT_EQ(station.setup().TimeLeft.Get(), "1");
  EXPECT_EQ(station.machine.dialogs.messages.size(), 1U);
  const auto reports = station.LogOf("SendMorseId");
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_TRUE(reports[0].ends_with("in Ostrel.modGlobal.SendMorseId ")) << reports[0];
}

TEST(Identification, TheMenuSendsOneWheneverThereIsATextAndAPort) {
  VirtualStation station;
  station.Set({{"CWIDTime", "0"}, {"LogProgram", "1"}});
  station.Start();
  auto& actions = station.station->actions();
  station.Run(45s);
  EXPECT_TRUE(station.LogOf("CW ID").empty()) << "switched off";
  station.setup().IDTime.Set("7");
  station.Run(60s);
  actions.SendMorseId();
  EXPECT_EQ(station.setup().TimeLeft.Get(), "7");
  station.setup().CWidenty.Set("");
  actions.SendMorseId();
  station.setup().CWidenty.Set("DE TEST");
  station.setup().lblOutStop.Set("");
  actions.StepPort(Button::kLeft);
  actions.SendMorseId();
  EXPECT_EQ(station.LogOf("CW ID").size(), 1U);
  EXPECT_EQ(station.machine.dialogs.messages.back().text,
            "No com port is open. The station cannot be identified.");
}

}  // namespace
}  // namespace ostrel
