// Full dates for the days, hours and minutes of headings and area lines.
#pragma once

#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "base/time.h"

namespace ostrel {

/// A day of some month, UTC.
struct DayTime {
  int day, hour, minute;
};
/// "192054": the 19th, 20:54. Nothing for what is no such time.
std::optional<DayTime> ReadDayTime(std::string_view text);

/// No product is older, and none speaks of later years: the system's own clock, which counts
/// nanoseconds, has no year 2263.
inline constexpr int kFirstYear = 1970, kLastYear = 2200;

/// The moment of a calendar date and time; nothing when there is no such one, or in another year.
std::optional<UtcTime> MomentOf(int year, int month, int day, int hour, int minute);

/// The moment with that day and time nearest to `reference`, at most 15 days away.
std::optional<UtcTime> Nearest(DayTime time, UtcTime reference);

/// The line that tells when a bulletin was issued (NWS directive 10-1701): "354 PM CDT THU JUL 19
/// 2018", "1200 UTC MON JUN 27 2022", also with a second zone's time behind it.
struct TimeLine {
  std::optional<UtcTime> moment;  // nothing when there is no such date
  bool isCertain = false;         // not with another weekday than the date has
  int year = 0;
};
/// Nothing for any other line.
std::optional<TimeLine> ReadTimeLine(std::string_view line);

/// What a bulletin tells of its month and year.
class Dates {
 public:
  /// Times of an event. An issuing time is never far behind its end, nor long before its begin.
  struct Span {
    std::optional<UtcTime> begins, ends;
  };

  Dates(std::vector<Span> events, std::optional<TimeLine> line, UtcTime now)
      : events_(std::move(events)), line_(line), now_(now) {}

  /// The moment of `time` by the first that tells it for certain: the bulletin's own date where it
  /// agrees with the events, the events' times, an own date of another weekday where `time` is its
  /// time to the minute, and `now` where it contradicts nothing of these.
  std::optional<UtcTime> FullTime(DayTime time) const;

 private:
  bool AgreesWithEvents(UtcTime moment) const;
  bool AgreesWithYear(UtcTime moment) const;
  std::optional<UtcTime> ByLine(DayTime time) const;
  std::optional<UtcTime> ByEvents(DayTime time) const;

  std::vector<Span> events_;
  std::optional<TimeLine> line_;
  UtcTime now_;
};

}  // namespace ostrel
