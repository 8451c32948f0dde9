// Calendar time. Everything in files, names and the log is local time; only the packet header is
// UTC. Pacing of the line goes by the monotonic clock instead (platform/clock.h).
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

using std::chrono::milliseconds;
using std::chrono::seconds;

using LocalTime = std::chrono::local_time<milliseconds>;
using UtcTime = std::chrono::sys_time<milliseconds>;

/// A local time taken apart.
struct CalendarTime {
  int year, month, day, hour, minute, second;
};
CalendarTime Calendar(LocalTime time);

/// A time of day to the minute, as a schedule entry names it.
struct TimeOfDay {
  int hour, minute;
  friend bool operator==(TimeOfDay, TimeOfDay) = default;
};
/// "hh:mm", 00:00 to 23:59, exactly five characters; nothing for any other text.
std::optional<TimeOfDay> ParseTimeOfDay(std::string_view text);

/// `local` in UTC by the offset that is in force now, whole seconds. A file's time stamp is read as
/// local time and converted back with the *present* offset, so a stamp from before a change of the
/// offset comes out shifted; the receivers have always seen it so.
UtcTime LocalToUtc(LocalTime local, seconds presentOffset);

/// "mm/dd/yy hh:mm:ss": the log's stamp and the time in the line of a started file.
std::string FormatLogStamp(LocalTime time);
/// "mm/dd/yyyy hh:mm:ss": the error window's stamp.
std::string FormatDisplayStamp(LocalTime time);
/// "10/27/2003 4:28:30 PM"; a time exactly on midnight is the date alone.
std::string FormatGeneral(LocalTime time);

/// To two units: "42 s", "3 min 20 s", "2 h 5 min", "4 d 3 h".
std::string SpellDuration(std::chrono::duration<double> duration);

/// Boundaries of the clock crossed between two times: from 10:00:59 to 10:01:00 is one minute.
long long MinuteBoundaries(LocalTime from, LocalTime to);
long long SecondBoundaries(LocalTime from, LocalTime to);

}  // namespace ostrel
