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

}  // namespace
}  // namespace ostrel
