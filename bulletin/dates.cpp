#include "bulletin/dates.h"

#include <algorithm>
#include <array>

#include "base/text.h"
#include "bulletin/codes.h"
#include "bulletin/letters.h"

namespace ostrel {

namespace chr = std::chrono;
using chr::days;

namespace {

constexpr std::array kMonths = {"JANUARY",   "FEBRUARY", "MARCH",    "APRIL",
                                "MAY",       "JUNE",     "JULY",     "AUGUST",
                                "SEPTEMBER", "OCTOBER",  "NOVEMBER", "DECEMBER"};
constexpr std::array kWeekdays = {"SUNDAY",   "MONDAY", "TUESDAY", "WEDNESDAY",
                                  "THURSDAY", "FRIDAY", "SATURDAY"};

/// The place of `word` (three letters, or the whole name) in `names`; -1 when it has none.
template <std::size_t size>
int PlaceOf(std::string_view word, const std::array<const char*, size>& names) {
  const auto upper = ToUpper(word);
  for (std::size_t i = 0; i < size; ++i) {
    const std::string_view name = names[i];
    if (upper == name || upper == name.substr(0, 3)) return static_cast<int>(i);
  }
  return -1;
}

/// Takes "AM" or "PM" off `text`; 0 where neither stands.
char TakeHalf(std::string_view& text) {
  auto rest = text;
  const auto word = ToUpper(TakeWord(rest));
  if (word != "AM" && word != "PM") return 0;
  text = rest;
  return word.front();
}

/// "354", "0354", "3:54", "3": hours and minutes as they stand.
std::optional<TimeOfDay> ReadClock(std::string_view word) {
  std::string digits(word);
  if (const auto colon = digits.find(':'); colon != std::string::npos) {
    if (digits.size() - colon != 3) return std::nullopt;
    digits.erase(colon, 1);
  } else if (digits.size() < 3) {
    digits += "00";
  }
  const auto number = WholeNumber(digits);
  if (!number || digits.size() > 4 || *number % 100 > 59) return std::nullopt;
  return TimeOfDay{*number / 100, *number % 100};
}

/// The clock of 24 hours from one of two halves of a day; 0 for `half` is no half.
std::optional<TimeOfDay> OnDay(TimeOfDay clock, char half) {
  if (half == 0) return clock.hour < 24 ? std::optional(clock) : std::nullopt;
  if (clock.hour < 1 || clock.hour > 12) return std::nullopt;
  clock.hour = clock.hour % 12 + (half == 'P' ? 12 : 0);
  return clock;
}

/// Takes "(757 PM EST)" off `text`.
void PassOverBrackets(std::string_view& text) {
  const auto start = std::min(text.find_first_not_of(' '), text.size());
  if (text.substr(start).starts_with('('))
    text.remove_prefix(std::min(text.find(')', start), text.size() - 1) + 1);
}

struct WrittenDate {
  int weekday = -1, month = -1, day = 0, year = 0;
};
WrittenDate TakeDate(std::string_view text) {
  WrittenDate date;
  auto word = TakeWord(text);
  date.weekday = PlaceOf(word, kWeekdays);
  if (date.weekday >= 0) word = TakeWord(text);
  date.month = PlaceOf(word, kMonths);
  date.day = WholeNumber(TakeWord(text)).value_or(0);
  const auto year = TakeWord(text);
  date.year = year.size() == 4 ? WholeNumber(year).value_or(0) : 0;
  const auto rest = TakeWord(text);
  if (!rest.empty() && rest.front() != '/') date.year = 0;
  return date;
}

bool HasWeekday(const WrittenDate& date, UtcTime local) {
  const chr::weekday weekday(chr::floor<days>(local));
  return date.weekday < 0 || static_cast<int>(weekday.c_encoding()) == date.weekday;
}

/// A product is issued at most 16 days before its event begins and a day after it ends, and no
/// event lasts much longer than a year.
bool Agrees(UtcTime moment, const Dates::Span& event) {
  constexpr days kEarliest(16), kLongest(400), kLate(1);
  if (event.ends && moment > *event.ends + kLate) return false;
  if (event.begins)
    return moment >= *event.begins - kEarliest && moment <= *event.begins + kLongest;
  return !event.ends || moment >= *event.ends - kLongest;
}

}  // namespace

std::optional<UtcTime> MomentOf(int year, int month, int day, int hour, int minute) {
  const auto date = chr::year(year) / month / day;
  if (!date.ok() || year < kFirstYear || year > kLastYear || hour < 0 || hour > 23 || minute < 0 ||
      minute > 59)
    return std::nullopt;
  return chr::sys_days(date) + chr::hours(hour) + chr::minutes(minute);
}

std::optional<DayTime> ReadDayTime(std::string_view text) {
  const auto number = text.size() == 6 ? WholeNumber(text) : std::nullopt;
  if (!number) return std::nullopt;
  const DayTime time{*number / 10000, *number / 100 % 100, *number % 100};
  if (time.day < 1 || time.day > 31 || time.hour > 23 || time.minute > 59) return std::nullopt;
  return time;
}

std::optional<UtcTime> Nearest(DayTime time, UtcTime reference) {
  const chr::year_month_day date(chr::floor<days>(reference));
  std::optional<UtcTime> nearest;
  auto least = UtcTime::duration(days(15)) + milliseconds(1);
  for (const int offset : {0, -1, 1}) {
    const auto month = date.year() / date.month() + chr::months(offset);
    const auto moment =
        MomentOf(int(month.year()), int(unsigned(month.month())), time.day, time.hour, time.minute);
    if (!moment) continue;
    const auto distance = chr::abs(*moment - reference);
    if (distance == least) nearest.reset();
    if (distance >= least) continue;
    least = distance;
    nearest = moment;
  }
  return nearest;
}

std::optional<TimeLine> ReadTimeLine(std::string_view line) {
  if (line.empty() || !IsDigit(line.front())) return std::nullopt;
  auto word = TakeWord(line);
  const auto digits = word.substr(0, word.find_first_not_of("0123456789:"));
  word.remove_prefix(digits.size());  // "10:02am"
  auto half = TakeHalf(word);
  if (!word.empty()) return std::nullopt;
  if (half == 0) half = TakeHalf(line);
  const auto zone = TimeZoneOffset(TakeWord(line));
  const auto clock = ReadClock(digits);
  // Without halves of the day only the world's own time is certain.
  if (!zone || !clock || (half == 0 && *zone != chr::minutes(0))) return std::nullopt;
  PassOverBrackets(line);
  const auto date = TakeDate(line);
  TimeLine read{.moment = std::nullopt, .year = date.year};
  if (read.year == 0) return std::nullopt;
  const auto onDay = OnDay(*clock, half);
  const auto local = onDay
                         ? MomentOf(date.year, date.month + 1, date.day, onDay->hour, onDay->minute)
                         : std::nullopt;
  if (!local) return read;
  read.moment = *local - *zone;
  read.isCertain = HasWeekday(date, *local);
  return read;
}

bool Dates::AgreesWithEvents(UtcTime moment) const {
  return events_.empty() || std::any_of(events_.begin(), events_.end(),
                                        [&](const Span& event) { return Agrees(moment, event); });
}

bool Dates::AgreesWithYear(UtcTime moment) const {
  if (!line_) return true;
  const auto yearOf = [](UtcTime time) {
    return int(chr::year_month_day(chr::floor<days>(time)).year());
  };
  // The line's year is a local one.
  return line_->year >= yearOf(moment - days(1)) && line_->year <= yearOf(moment + days(1));
}

std::optional<UtcTime> Dates::ByEvents(DayTime time) const {
  std::optional<UtcTime> found;
  for (const auto& [begins, ends] : events_) {
    for (const auto& reference : {begins, ends}) {
      const auto moment = reference ? Nearest(time, *reference) : std::nullopt;
      if (!moment || !Agrees(*moment, {begins, ends})) continue;
      if (found && *found != *moment) return std::nullopt;
      found = moment;
    }
  }
  return found;
}

std::optional<UtcTime> Dates::ByLine(DayTime time) const {
  const auto moment = line_ && line_->moment ? Nearest(time, *line_->moment) : std::nullopt;
  return moment && AgreesWithEvents(*moment) ? moment : std::nullopt;
}

std::optional<UtcTime> Dates::FullTime(DayTime time) const {
  const auto byLine = ByLine(time);
  if (byLine && line_->isCertain) return byLine;
  if (const auto moment = ByEvents(time)) return moment;
  constexpr chr::hours kZone(1);  // summer time or not is mistaken most
  if (byLine) {
    const auto apart = chr::abs(*byLine - *line_->moment);
    return apart == kZone || apart == chr::hours(0) ? byLine : std::nullopt;
  }
  const auto moment = Nearest(time, now_);
  return moment && AgreesWithEvents(*moment) && AgreesWithYear(*moment) ? moment : std::nullopt;
}

}  // namespace ostrel
