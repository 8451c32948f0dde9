// The transmit period and the pause behind it, by the second and by the keying line.
#include <fmt/format.h>
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
  nanoseconds drain{};  // what waited behind the text's write, on the line
};

/// Runs until data flows again after a pause, at most for `limit`.
PauseRecord RunThroughPause(VirtualStation& station, const LineSettings& line, milliseconds limit) {
  PauseRecord record;
  auto& machine = station.machine;
  machine.line.onWrite = [&](std::string_view bytes) {
    const auto now = machine.clock.Monotonic();
    if (bytes == "Transmit Timeout" && record.text < 0ms) {
      record.text = now;
      record.drain = TimeOnLine(line, machine.line.BytesWaiting());
      EXPECT_TRUE(machine.line.KeyLine1());
    } else if (record.text >= 0ms && record.data < 0ms) {
      record.data = now;
    }
  };
  machine.loop.RunUntil([&] { return record.data >= 0ms; }, limit);
  for (const auto& event : machine.line.keying) {
    EXPECT_TRUE(event.line == 1 || event.at == 0ms) << "the second line stays up";
    if (event.line != 1 || event.at == 0ms) continue;
    (event.on ? record.rise : record.drop) = event.at;
  }
  return record;
}

TEST(DutyCycle, PausesAtTheMinuteBoundaryBeyondThePeriod) {
  struct {
    UtcTime onAir;
    const char* minutes;
    const char* pause;  // the first tick at or after this time, or never
  } const rows[] = {{kTen + 59s, "9", "10:10:00"},
                    {kTen + 59999ms, "9", "10:10:00"},
                    {kTen + 60s, "9", "10:11:00"},
                    {kTen + 59s, "1", "10:02:00"},
                    {kTen + 59s, "0.5", "10:01:00"},
                    {kTen, "0", nullptr},
                    {kTen, "-1", nullptr}};
  for (const auto& row : rows) {
    VirtualStation station(row.onAir - kKeyUp);
    station.Set("TxUpTime", row.minutes);
    station.Set("CWIDTime", "0");
    station.Set("ComBaud", "38400");
    station.Start();
    const auto record = RunThroughPause(station, {.rate = 38400}, 12min);
    const auto what = fmt::format("{} minutes, pause {}", row.minutes, row.pause ? row.pause : "-");
    if (!row.pause) {
      EXPECT_EQ(record.text, -1ms) << what;
      continue;
    }
    const auto at = station.machine.clock.ToLocal(row.onAir - kKeyUp + record.text);
    EXPECT_EQ(FormatLogStamp(at).substr(9), row.pause) << what;
    EXPECT_LT(Calendar(at).second, 1) << what;
    EXPECT_LT(at - chr::floor<seconds>(at), kCyclePeriod) << what;
  }
}

TEST(DutyCycle, DrainsBehindItsTextThenDropsForElevenSecondBoundaries) {
  for (const auto& [down, boundaries] : {std::pair{"10", 11}, {"0", 1}, {"2.5", 3}}) {
    VirtualStation station;
    station.Set("TxUpTime", "1");
    station.Set("TxDownTime", down);
    station.Set("TxDelay", "700");
    station.Set("CWIDTime", "0");
    station.Start();
    auto& window = station.window();
    int shown = 0;
    const auto hear = window.lblActivefile.OnChange([&](const std::string& text) {
      if (text != "Paused") return;
      ++shown;
      EXPECT_EQ(window.lblActivefileBackColor.Get(), Shade::kYellow);
      EXPECT_EQ(station.machine.line.BytesWaiting(), 0U);
    });
    const auto record = RunThroughPause(station, {}, 3min);
    EXPECT_EQ(shown, 1);
    const auto drained = record.text + chr::duration_cast<milliseconds>(record.drain);
    EXPECT_GE(record.drain, TimeOnLine({}, 16 + 50)) << "a packet was under way";
    EXPECT_LE(chr::abs(record.drop - drained), 10ms) << "a byte begun counts whole";
    const auto local = [](milliseconds at) { return LocalTime(kNoon.time_since_epoch() + at); };
    EXPECT_EQ(SecondBoundaries(local(record.drop), local(record.rise)), boundaries) << down;
    EXPECT_LT(record.rise - chr::floor<seconds>(record.rise), 50ms) << "as soon as it is over";
    EXPECT_GE(record.data, record.rise + 700ms);
    EXPECT_LT(record.data, record.rise + 700ms + 2 * kCyclePeriod);
    EXPECT_EQ(window.lblActivefileBackColor.Get(), Shade::kLightGrey);
  }
}

TEST(DutyCycle, NoStepOfTheClockStretchesThePause) {
  // The pause is due 600 s after the start; the drain is over by 611 s.
  for (const auto at : {600100ms, 615000ms}) {
    for (const milliseconds step : {milliseconds(1h), milliseconds(-1h)}) {
      VirtualStation station;
      station.Set("CWIDTime", "0");
      station.Start();
      station.machine.clock.At(at, [&] {
        EXPECT_EQ(station.machine.line.KeyLine1(), at < 611s);
        station.machine.clock.StepWallClock(step);
      });
      const auto record = RunThroughPause(station, {}, 13min);
      EXPECT_GT(record.rise - record.drop, 9s) << at.count() << " " << step.count();
      EXPECT_LE(record.rise - record.drop, 11050ms) << at.count() << " " << step.count();
    }
  }
}

TEST(DutyCycle, NoSecondTickRunsInsideThePauseAndTheOperatorMayTakeThePort) {
  VirtualStation station;
  station.Set("TxUpTime", "1");
  station.Set("CWIDTime", "0");
  station.Start();
  auto& line = station.machine.line;
  const auto withDialog = [&] {  // timers go on under a dialog of the operator's
    const auto carried = line.carried.size();
    station.Run(3s);
    EXPECT_EQ(line.carried.size(), carried);
    EXPECT_FALSE(line.KeyLine1());
    line.devices.clear();
    station.station->operators().StepPort(Button::kLeft);
  };
  const auto hear = station.window().lblActivefile.OnChange([&](const std::string& text) {
    if (text == "Paused")
      station.machine.loop.OperatorAt(station.machine.clock.Monotonic() + 1s, withDialog);
  });
  station.Run(150s);
  EXPECT_EQ(station.window().lblDataRate.Get(), "Unable to open Com Port # 2.");
  EXPECT_EQ(station.window().lblActivefile.Get(), "");
  EXPECT_FALSE(line.IsOpen() || station.machine.cycleTimer.IsRunning());
}

}  // namespace
}  // namespace ostrel
