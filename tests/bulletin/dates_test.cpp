#include "bulletin/dates.h"

#include <gtest/gtest.h>

#include "tests/bulletin/reading.h"

namespace ostrel {
namespace {

TEST(BulletinDates, AreReadFromTheLineOfTheIssuingTime) {
  // What it tells; "~" in front where the weekday is another one's, the year alone where there is
  // no such date.
  const std::pair<std::string, std::string> cases[] = {
      {"354 PM CDT THU JUL 19 2018", "2018-07-19 20:54"},
      {"0623 AM CDT MON MAY 19 2014", "2014-05-19 11:23"},
      {"5:54 PM CDT Sat May 27 2023", "2023-05-27 22:54"},
      {"10:02am EDT Tuesday, April 25, 2023", "2023-04-25 14:02"},
      {"5 AM AST SUN SEP 4 2005", "2005-09-04 09:00"},
      {"1200 AM CST THU JAN 1 2015", "2015-01-01 06:00"},
      {"1200 PM CST THU JAN 1 2015", "2015-01-01 18:00"},
      {"1200 UTC MON JUN 27 2022", "2022-06-27 12:00"},
      {"527 AM ChST Sun Jun 19 2016", "2016-06-18 19:27"},
      {"302 PM PWT Fri Jun 24 2022 /402 PM CHUT Fri Jun 24 2022/", "2022-06-24 06:02"},
      {"857 PM EDT (757 PM EST) SAT JUN 22 1996", "1996-06-23 00:57"},
      {"1145 AM PST DEC 30 2021", "2021-12-30 19:45"},
      {"1017 AM CDT MON JAN 01 2016", "~2016-01-01 15:17"},
      {"130 PM MDT WED TUE 19 2014", "2014"},
      {"1300 PM MDT TUE AUG 19 2014", "2014"},
      {"130 PM MDT TUE FEB 30 2014", "2014"},
      {"130 PM MDT TUE AUG 19 14", "none"},
      {"130 PM XYZ TUE AUG 19 2014", "none"},
      {"0130 MDT TUE AUG 19 2014", "none"},  // which half of the day?
      {"160 PM MDT TUE AUG 19 2014", "none"},
      {"130 PM MDT TUE AUG 19 2014 AND LATER", "none"},
      {"70398 TTAA  60121 70398 99018 12019", "none"},
      {"12 (", "none"},
      {"", "none"},
  };
  for (const auto& [text, told] : cases) {
    const auto line = ReadTimeLine(text);
    const auto tells = !line             ? "none"
                       : !line->moment   ? std::to_string(line->year)
                       : line->isCertain ? Told(line->moment)
                                         : "~" + Told(line->moment);
    EXPECT_EQ(tells, told) << text;
  }
}

TEST(BulletinDates, OfADayAreTheNearestWithinFifteenDays) {
  const auto nearest = [](const char* text, UtcTime reference) {
    return Told(Nearest(ReadDayTime(text).value(), reference));
  };
  EXPECT_EQ(nearest("010030", At(2020, 2, 29, 23)), "2020-03-01 00:30");
  EXPECT_EQ(nearest("311200", At(2015, 1, 1)), "2014-12-31 12:00");
  EXPECT_EQ(nearest("160000", At(2015, 1, 1)), "2015-01-16 00:00");
  EXPECT_EQ(nearest("160001", At(2015, 1, 1)), "-") << "15 days and a minute";
  EXPECT_EQ(nearest("310000", At(2015, 2, 16, 12)), "-") << "February has no such day";
  EXPECT_EQ(nearest("150000", At(2015, 3, 1)), "-") << "14 days to both sides";
}

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
