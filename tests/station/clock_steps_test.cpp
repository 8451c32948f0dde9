// Transmit periods and pauses under a wall clock that is set: measured by the time that does not
// jump.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

struct Period {
  bool isPause;
  milliseconds length;
};

/// The first transmit periods and pauses of a station whose clock is set by `step` at `at`.
std::vector<Period> Periods(milliseconds at, milliseconds step) {
  VirtualStation station;
  station.Set("CWIDTime", "0");
  station.Set("ComBaud", "38400");
  station.Set("TxUpTime", "2");
  station.Set("TxDownTime", "10");
  station.Start();
  station.machine.clock.At(at, [&] { station.machine.clock.StepWallClock(step); });
  station.Run(8min);
  std::vector<Period> periods;
  const KeyEvent* last = nullptr;
  for (const auto& event : station.machine.line.keying) {
    if (event.line != 1) continue;
    if (last) periods.push_back({event.on, event.at - last->at});
    last = &event;
  }
  return periods;
}

TEST(StationClock, StepsStretchAndCutNoPeriodAndNoPauseByMoreThanABoundary) {
  // A step of up to two seconds passes for none: so long it can hold a period up.
  constexpr milliseconds kUnseen{2000}, kTick{125};
  const auto usual = Periods(0s, 0s);
  ASSERT_GE(usual.size(), 4u);
  // In a transmit period, in its last second, in the pause behind it.
  const milliseconds inPause = usual[0].length + 5s;
  for (const milliseconds at : {milliseconds(70s), usual[0].length - 500ms, inPause}) {
    for (const milliseconds size : {1s, 3s, 45s, 3600s, 3600s * 24 * 365}) {
      for (const milliseconds step : {size, -size}) {
        const auto periods = Periods(at, step);
        ASSERT_GE(periods.size(), 4u);
        for (std::size_t i = 0; i < 4; ++i) {
          const milliseconds boundary = usual[i].isPause ? 1s : 60s;
          EXPECT_LE(std::chrono::abs(periods[i].length - usual[i].length),
                    boundary + kUnseen + kTick)
              << (usual[i].isPause ? "pause " : "period ") << i << " of "
              << periods[i].length.count() << " ms with a step of " << step.count() << " ms at "
              << at.count() << " ms";
        }
      }
    }
  }
}

}  // namespace
}  // namespace ostrel
