#include "base/time.h"

#include <cmath>
#include <fmt/format.h>

namespace ostrel {

namespace chr = std::chrono;

CalendarTime Calendar(LocalTime time) {
  const auto day = chr::floor<chr::days>(time);
  const chr::year_month_day date(day);
  const chr::hh_mm_ss clock(chr::floor<seconds>(time - day));
  return {static_cast<int>(date.year()),
          static_cast<int>(static_cast<unsigned>(date.month())),
          static_cast<int>(static_cast<unsigned>(date.day())),
          static_cast<int>(clock.hours().count()),
          static_cast<int>(clock.minutes().count()),
          static_cast<int>(clock.seconds().count())};
}

std::optional<TimeOfDay> ParseTimeOfDay(std::string_view text) {
  if (text.size() != 5 || text[2] != ':') return std::nullopt;
  for (const std::size_t i : {0u, 1u, 3u, 4u}) {
    if (text[i] < '0' || text[i] > '9') return std::nullopt;
  }
  const TimeOfDay time{(text[0] - '0') * 10 + (text[1] - '0'),
                       (text[3] - '0') * 10 + (text[4] - '0')};
  if (time.hour > 23 || time.minute > 59) return std::nullopt;
  return time;
}

UtcTime LocalToUtc(LocalTime local, seconds presentOffset) {
  return UtcTime(chr::floor<seconds>(local).time_since_epoch() - presentOffset);
}

std::string FormatLogStamp(LocalTime time) {
  const auto t = Calendar(time);
  return fmt::format("{:02}/{:02}/{:02} {:02}:{:02}:{:02}", t.month, t.day, t.year % 100, t.hour,
                     t.minute, t.second);
}

std::string FormatDisplayStamp(LocalTime time) {
  const auto t = Calendar(time);
  return fmt::format("{:02}/{:02}/{:04} {:02}:{:02}:{:02}", t.month, t.day, t.year, t.hour,
                     t.minute, t.second);
}

std::string FormatGeneral(LocalTime time) {
  const auto t = Calendar(time);
  auto text = fmt::format("{}/{}/{:04}", t.month, t.day, t.year);
  if (t.hour == 0 && t.minute == 0 && t.second == 0) return text;
  const int hour = t.hour % 12 == 0 ? 12 : t.hour % 12;
  return text +
         fmt::format(" {}:{:02}:{:02} {}", hour, t.minute, t.second, t.hour < 12 ? "AM" : "PM");
}

long long MinuteBoundaries(LocalTime from, LocalTime to) {
  return (chr::floor<chr::minutes>(to) - chr::floor<chr::minutes>(from)).count();
}

long long SecondBoundaries(LocalTime from, LocalTime to) {
  return (chr::floor<seconds>(to) - chr::floor<seconds>(from)).count();
}

std::string SpellDuration(std::chrono::duration<double> duration) {
  const auto whole = std::llround(duration.count());
  const auto minutes = whole / 60, hours = minutes / 60;
  if (whole < 60) return fmt::format("{} s", whole);
  if (minutes < 60) return fmt::format("{} min {} s", minutes, whole % 60);
  if (hours < 24) return fmt::format("{} h {} min", hours, minutes % 60);
  return fmt::format("{} d {} h", hours / 24, hours % 24);
}

}  // namespace ostrel
