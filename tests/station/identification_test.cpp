// The station identifies itself in Morse, at its interval and on demand.
#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

using Times = std::vector<long long>;
using Lines = std::vector<std::string>;

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
  station.Set("CWIDText", "De e");
  station.Set("CWIDTime", "1");
  station.Set("ComBaud", "38400");
  station.Set("LogProgram", "1");
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
  const auto& keying = station.machine.line.keying;
  for (std::size_t i = 2; i + 1 < keying.size(); i += 2)
    EXPECT_EQ(keying[i].line * 10 + keying[i + 1].line, 12) << "line 1 goes first";
  // A packet takes 319.7 ms; it has left the port when the transmitter drops, and no more than
  // that.
  const auto drained = (keying[2].at - lastWrite).count();
  EXPECT_GE(drained, 320);
  EXPECT_LE(drained, 335);
  EXPECT_EQ(station.setup().LastId.Get(), "11/18/2026 12:00:30 PM");
  EXPECT_EQ(station.LogOf("CW ID"), Lines{"11/18/26 12:00:32 CW ID         Sent - DE E"});
  EXPECT_EQ(station.window().lblActivefileBackColor.Get(), Shade::kLightGrey);
  EXPECT_TRUE(station.machine.cycleTimer.IsRunning());
}

TEST(Identification, ComesEveryTenMinutesAtSecondThirty) {
  VirtualStation station;
  station.Set("ComBaud", "38400");
  station.Start();
  Lines began;
  const auto hear =
      station.setup().LastId.OnChange([&](const std::string& t) { began.push_back(t); });
  station.Run(45min);
  EXPECT_EQ(began, (Lines{"11/18/2026 12:09:30 PM", "11/18/2026 12:19:30 PM",
                          "11/18/2026 12:29:30 PM", "11/18/2026 12:39:30 PM"}));
  EXPECT_TRUE(station.LogOf("CW ID").empty()) << "nobody asked for it in the log";
}

TEST(Identification, NoPauseBeginsWhileItKeys) {
  VirtualStation station;
  station.Set("CWIDTime", "2");
  station.Set("CWIDText", "DE EMWIN TEST DE EMWIN TEST DE EMWIN TEST");
  station.Set("CWSpeed", "0");  // it keys beyond the minute at which the pause is due
  station.Set("TxUpTime", "1");
  station.Set("ComBaud", "38400");
  station.Start();
  int pauses = 0, identifications = 0;
  station.machine.line.onWrite = [&](std::string_view bytes) {
    EXPECT_NE(station.window().lblActivefile.Get(), "Station ID");
    if (bytes != "Transmit Timeout") return;
    ++pauses;
    EXPECT_TRUE(station.machine.line.KeyLine1());
    // It waited for the identification: due at 12:02:00, which was in the middle of the text.
    if (pauses == 1) {
      EXPECT_GT(Calendar(station.machine.clock.Now()).second, 10);
    }
  };
  const auto hear = station.setup().LastId.OnChange([&](const std::string&) { ++identifications; });
  station.Run(10min);
  EXPECT_GE(pauses, 2);
  EXPECT_GE(identifications, 2);
}

TEST(Identification, AFailureGivesEverythingBackAndBeginsTheCountdownAgain) {
  VirtualStation station;
  station.Set("CWIDTime", "1");
  station.Set("ComBaud", "38400");
  station.Start();
  std::filesystem::remove(station.Path("RtMorse.txt"));
  station.Run(45s);
  ASSERT_EQ(station.LogOf("Timer").size(), 1U);
  EXPECT_TRUE(station.LogOf("Timer")[0].starts_with(
      "11/18/26 12:00:30 Timer        Error # 53, File not found"));
  const auto packets = station.Packets().size();
  station.Run(10s);
  EXPECT_GT(station.Packets().size(), packets) << "the cycle goes on";
  const auto expectRestored = [&] {
    EXPECT_TRUE(station.machine.line.KeyLine1() && station.machine.line.KeyLine2());
    EXPECT_TRUE(station.machine.cycleTimer.IsRunning());
    EXPECT_EQ(station.window().lblActivefileBackColor.Get(), Shade::kLightGrey);
    EXPECT_NE(station.window().lblActivefile.Get(), "Station ID");
    EXPECT_EQ(station.setup().TimeLeft.Get(), "1");
  };
  expectRestored();
  station.station->operators().SendMorseId();
  expectRestored();
  EXPECT_EQ(station.machine.dialogs.messages.size(), 1U);
  EXPECT_EQ(station.LogOf("SendMorseId").size(), 1U);
}

TEST(Identification, TheMenuSendsOneWheneverThereIsATextAndAPort) {
  VirtualStation station;
  station.Set("CWIDTime", "0");
  station.Set("LogProgram", "1");
  station.Start();
  auto& setup = station.setup();
  auto& operators = station.station->operators();
  station.Run(45s);
  EXPECT_EQ(setup.TimeLeft.Get(), "0") << "switched off: it runs down and stays";
  EXPECT_TRUE(station.LogOf("CW ID").empty());
  setup.IDTime.Set("7");
  EXPECT_EQ(setup.TimeLeft.Get(), "7");
  station.Run(60s);
  operators.SendMorseId();
  EXPECT_EQ(station.LogOf("CW ID").size(), 1U);
  EXPECT_EQ(setup.TimeLeft.Get(), "7");

  station.Run(60s);
  setup.CWidenty.Set("");
  operators.SendMorseId();
  setup.CWidenty.Set("DE TEST");
  station.machine.line.devices.clear();
  operators.StepPort(Button::kLeft);
  const auto changes = station.machine.line.keying.size();
  operators.SendMorseId();
  EXPECT_EQ(station.machine.line.keying.size(), changes);
  EXPECT_EQ(setup.TimeLeft.Get(), "6");
  EXPECT_EQ(station.LogOf("CW ID").size(), 1U);
  ASSERT_EQ(station.machine.dialogs.messages.size(), 1U);
  EXPECT_EQ(station.machine.dialogs.messages[0].text,
            "No com port is open. The station cannot be identified.");
}

TEST(Identification, OneAskedForInTheDrainOfAnotherIsSentAsWell) {
  VirtualStation station;
  station.Set("LogProgram", "1");
  station.Start();
  station.machine.loop.OperatorAt(2s, [&] { station.station->operators().SendMorseId(); });
  station.machine.loop.OperatorAt(4s, [&] {
    EXPECT_FALSE(station.machine.cycleTimer.IsRunning()) << "the first one drains";
    station.station->operators().SendMorseId();
    EXPECT_FALSE(station.machine.cycleTimer.IsRunning()) << "and no tick may come into it";
  });
  station.Run(60s);
  EXPECT_EQ(station.LogOf("CW ID").size(), 2U);
  EXPECT_TRUE(station.machine.cycleTimer.IsRunning());
}

}  // namespace
}  // namespace ostrel
