#include "bulletin/dates.h"

#include <gtest/gtest.h>

#include "tests/bulletin/reading.h"

namespace ostrel {
namespace {

TEST(BulletinDates, TakeMonthAndYearFromWhatIsCertain) {
  const auto line = [](const char* text) { return ReadTimeLine(text); };
  using Spans = std::vector<Dates::Span>;
  const Spans none, may{{At(2026, 5, 15, 15), At(2026, 5, 15, 16)}};
  const Spans ahead{{std::nullopt, At(2026, 6, 20)}},
      far{{At(2026, 5, 15, 15), At(2027, 5, 15, 16)}};
  const Spans twoMonths{{At(2026, 5, 1), At(2026, 5, 29)}};
  const auto now = At(2026, 11, 26);
  // A day and time, what tells of month and year, and the moment.
  const struct {
    const char* day;
    Spans events;
    std::optional<TimeLine> line;
    UtcTime now;
    std::string moment;
  } cases[] = {
      {"151500", may, line("1000 AM CDT FRI MAY 15 2026"), now, "2026-05-15 15:00"},
      {"151500", may, std::nullopt, now, "2026-05-15 15:00"},
      {"151500", none, line("1000 AM CDT FRI MAY 15 2026"), now, "2026-05-15 15:00"},
      {"151500", none, std::nullopt, now, "2026-11-15 15:00"},
      // Weeks in front of an end the line tells, not the events.
      {"251500", ahead, line("1000 AM CDT MON MAY 25 2026"), now, "2026-05-25 15:00"},
      {"251500", ahead, std::nullopt, now, "-"},
      {"151500", far, line("1000 AM CDT FRI MAY 15 2026"), now, "2026-05-15 15:00"},
      // What contradicts the events is not believed.
      {"151500", may, line("1000 AM CDT THU MAY 15 2025"), now, "2026-05-15 15:00"},
      {"151500", may, line("1000 AM CDT MON JUN 15 2026"), now, "2026-05-15 15:00"},
      {"141500", twoMonths, std::nullopt, now, "2026-05-14 15:00"},
      {"201500", ahead, std::nullopt, now, "2026-06-20 15:00"},
      // Of another weekday: where it has the time to the minute, and no events.
      {"151500", none, line("1000 AM CDT MON MAY 15 2026"), now, "2026-05-15 15:00"},
      {"151600", none, line("1000 AM CDT MON MAY 15 2026"), now, "2026-05-15 16:00"},
      {"151501", none, line("1000 AM CDT MON MAY 15 2026"), now, "-"},
      {"151500", may, line("1000 AM CDT MON MAY 15 2025"), now, "2026-05-15 15:00"},
      // A date that is none keeps its year.
      {"201300", none, line("130 PM MDT WED TUE 19 2014"), now, "-"},
      {"201300", none, line("130 PM MDT WED TUE 19 2014"), At(2014, 8, 19), "2014-08-20 13:00"},
      {"010300", none, line("800 PM CST WED XXX 31 2014"), At(2015, 1, 1), "2015-01-01 03:00"},
  };
  for (const auto& row : cases) {
    const Dates dates(row.events, row.line, row.now);
    EXPECT_EQ(Told(dates.FullTime(ReadDayTime(row.day).value())), row.moment)
        << row.day << " as row " << &row - cases;
  }
}

}  // namespace
}  // namespace ostrel
