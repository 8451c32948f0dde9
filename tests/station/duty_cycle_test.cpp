// The transmit period and the pause behind it, by the second and by the keying line.
#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

namespace chr = std::chrono;

const auto kTen = kNoon - 2h;
constexpr milliseconds kKeyUp{300};  // the station is on the air so long after its start

/// What the station did around its first pause, by the monotonic clock.
struct PauseRecord {
  milliseconds text{-1}, drop{-1}, rise{-1}, data{-1};
};

/// Runs until data flows again after a pause, at most for `limit`.
PauseRecord RunThroughPause(VirtualStation& station, milliseconds limit) {
  PauseRecord record;
  auto& machine = station.machine;
  machine.line.onWrite = [&](std::string_view bytes) {
    auto& moment = record.text < 0ms ? record.text : record.data;
    if (moment >= 0ms || (&moment == &record.text && bytes != "Transmit Timeout")) return;
    moment = machine.clock.Monotonic();
    EXPECT_TRUE(machine.line.KeyLine1());
  };
  machine.loop.RunUntil([&] { return record.data >= 0ms; }, limit);
  for (const auto& event : machine.line.keying) {
    EXPECT_TRUE(event.line == 1 || event.at == 0ms) << "the second line stays up";
    if (event.line == 1 && event.at > 0ms) (event.on ? record.rise : record.drop) = event.at;
  }
  return record;
}

TEST(DutyCycle, PausesAtTheMinuteBoundaryBeyondThePeriod) {
  struct {
    UtcTime onAir;
    const char *minutes, *pause;  // the first tick at or after this time, or never
  } const rows[] = {{kTen + 59s, "9", "10:10:00"},
                    {kTen + 60s, "9", "10:11:00"},
                    {kTen + 59s, "0.5", "10:01:00"},
                    {kTen, "0", nullptr}};
  for (const auto& [onAir, minutes, pause] : rows) {
    VirtualStation station(onAir - kKeyUp);
    station.Set({{"TxUpTime", minutes}, {"CWIDTime", "0"}, {"ComBaud", "38400"}});
    station.Start();
    const auto record = RunThroughPause(station, 12min);
    EXPECT_EQ(record.text >= 0ms, pause != nullptr) << minutes;
    if (!pause) continue;
    const auto at = station.machine.clock.ToLocal(onAir - kKeyUp + record.text);
    EXPECT_EQ(FormatLogStamp(at).substr(9), pause) << minutes;
    EXPECT_LT(at - chr::floor<seconds>(at), kCyclePeriod) << minutes;
  }
}

TEST(DutyCycle, NoStepOfTheClockStretchesOrCutsItByMoreThanABoundary) {
  // A step of up to two seconds passes for none: so long it can hold a period up.
  const auto unseen = [](milliseconds size) { return size <= 2s ? size : 0ms; };
  const auto run = [](milliseconds at, milliseconds step) {
    VirtualStation station;
    station.Set({{"CWIDTime", "0"}, {"ComBaud", "38400"}, {"TxUpTime", "2"}});
    station.Start();
    station.machine.clock.At(at, [&] { station.machine.clock.StepWallClock(step); });
    return RunThroughPause(station, 8min);
  };
  const auto usual = run(0s, 0s);
  // In the transmit period, in its last second, in the pause behind it.
  for (const auto at : {milliseconds(70s), usual.text - 500ms, usual.drop + 5s}) {
    for (const milliseconds size : {1s, 3s, 45s, 3600s * 24 * 365}) {
      for (const auto step : {size, -size}) {
        const auto stepped = run(at, step);
        const auto what = fmt::format("a step of {} at {}", step.count(), at.count());
        EXPECT_LE(chr::abs(stepped.text - usual.text), 60s + unseen(size) + kCyclePeriod) << what;
        EXPECT_LE(chr::abs(stepped.rise - stepped.drop - usual.rise + usual.drop),
                  1s + unseen(size) + kCyclePeriod)
            << what;
      }
    }
  }
}

}  // namespace
}  // namespace ostrel
