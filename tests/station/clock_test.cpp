// What the station does when its clock does something: the days on which local time changes, and
// clocks that are set.
#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

namespace chr = std::chrono;

UtcTime At(int month, int day, int hour, int minute) {
  return chr::sys_days(chr::year(2026) / month / day) + chr::hours(hour) + chr::minutes(minute);
}

/// Local time is UTC plus `before`, and from `change` on UTC plus `after` hours.
std::vector<ZoneRule> Zone(int before, UtcTime change, int after) {
  return {{UtcTime{}, chr::hours(before)}, {change, chr::hours(after)}};
}

const std::vector<ZoneRule> kUtc = Zone(0, UtcTime{}, 0);
const auto kSpring = Zone(-6, At(3, 8, 8, 0), -5), kAutumn = Zone(-5, At(11, 1, 7, 0), -6);

struct Expectation {
  const char* what;
  UtcTime start;
  std::vector<ZoneRule> zone;
  milliseconds stepAt, step;  // so long after the start the wall clock is set by `step`
  milliseconds duration;
  const char* minutes;  // interval of the identification and of the pause, or 0 for neither
  std::vector<const char*> entries;
  const char* timeline;
};

// The rules: an entry fires when second 0 of its minute is seen, statistics likewise; the countdown
// counts the seconds 30 that are seen; a transmit period is as long as without the change.
// clang-format off
const Expectation kExpectations[] = {
    {"spring: 02:00 becomes 03:00, what lies between is skipped",
     At(3, 8, 7, 58), kSpring, 0s, 0s, 8min, "0", {"01:59", "02:03", "03:00", "03:05"},
     "at01:59 01:59:00 at03:00 03:00:00 at03:05 03:05:00"},
    {"autumn: 02:00 becomes 01:00, what lies between comes twice",
     At(11, 1, 6, 57), kAutumn, 0s, 0s, 64min, "0", {"01:58", "02:00"},
     "at01:58 01:58:00 at01:58 01:58:00 at02:00 02:00:00"},
    {"a change over midnight leaves that day without its closing figures",
     At(9, 6, 3, 59), Zone(-4, At(9, 6, 4, 0), -3), 0s, 0s, 3min, "0", {"00:00", "01:00"},
     "at01:00 01:00:00"},
    {"spring: identification and transmit period go on as if nothing had happened",
     At(3, 8, 7, 55), kSpring, 0s, 0s, 12min, "9", {}, "ident 03:03:30 pause 03:05:00"},
    {"set an hour ahead: what is jumped over is not made up for",
     At(5, 5, 11, 50), kUtc, 5min, 1h, 12min, "9", {"11:51", "12:00", "12:56"},
     "at11:51 11:51:00 at12:56 12:56:00 ident 12:58:30 pause 13:00:00"},
    {"set an hour back: what comes again is done again",
     At(5, 5, 12, 0), kUtc, 5min, -1h, 12min, "9", {"12:01", "11:07"},
     "at12:01 12:01:00 at11:07 11:07:00 ident 11:08:30 pause 11:10:00"},
    {"set back over second 30: the minute counts twice",
     At(5, 5, 12, 10), kUtc, 40s, -20s, 2min, "2", {}, "ident 12:10:30"},
};
// clang-format on

TEST(StationClock, ChangesAndStepsHaveTheirExpectedEffect) {
  for (const auto& row : kExpectations) {
    VirtualStation station(row.start, row.zone);
    if (*row.minutes != '0') station.Set("ComBaud", "38400");  // its drain takes no second
    station.Set({{"CWIDTime", row.minutes}, {"TxUpTime", row.minutes}});
    std::string schedule;
    for (const std::string time : row.entries) {
      station.WriteFile(station.Path("at" + time), "x");
      schedule += time + " " + station.Path("at" + time) + " " + station.Path("copy") + "\r\n";
    }
    station.WriteFile(station.Path("RtSched.txt"), schedule);
    station.Start();
    std::string timeline;
    const auto note = [&](const std::string& what) {
      const auto stamp = FormatLogStamp(station.machine.clock.Now());
      timeline += (timeline.empty() ? "" : " ") + what + stamp.substr(8);
    };
    const auto ident = station.setup().LastId.OnChange([&](const std::string&) { note("ident"); });
    const auto pause = station.window().lblActivefile.OnChange([&](const std::string& text) {
      if (text == "Paused") note("pause");
    });
    station.files.copyFault = [&](const std::string& source, const std::string&) {
      if (source.find("/at") != std::string::npos) note(source.substr(source.find("/at") + 1));
      return 0;
    };
    station.machine.clock.At(row.stepAt, [&] { station.machine.clock.StepWallClock(row.step); });
    station.Run(row.duration);
    EXPECT_EQ(timeline, row.timeline) << row.what;
  }
}

}  // namespace
}  // namespace ostrel
