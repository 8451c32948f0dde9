#include "programs/queue/moment.h"

#include <algorithm>
#include <ctime>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <optional>
#include <regex>
#include <vector>

#include "base/failure.h"

namespace ostrel {

namespace {

std::optional<UtcTime> Before(const std::string& text, UtcTime now) {
  int count = 0;
  char unit = 0, rest = 0;
  if (std::sscanf(text.c_str(), "%6d%c%c", &count, &unit, &rest) != 2 || count < 0)
    return std::nullopt;
  if (unit == 'd') return now - std::chrono::days(count);
  if (unit == 'h') return now - std::chrono::hours(count);
  if (unit == 'm') return now - std::chrono::minutes(count);
  return std::nullopt;
}

bool SetDate(std::tm& parts, int year, int month, int day) {
  parts.tm_year = year - 1900;
  parts.tm_mon = month - 1;
  parts.tm_mday = day;
  const auto length = std::chrono::year(year) / month / std::chrono::last;
  return length.ok() && day >= 1 && day <= static_cast<int>(unsigned(length.day()));
}

bool SetTimeOfDay(std::tm& parts, int hour, int minute, int second) {
  parts.tm_hour = hour;
  parts.tm_min = minute;
  parts.tm_sec = second;
  return hour < 24 && minute < 60 && second < 60;
}

/// "2026-11-26", "2026-11-26 14:30" with seconds or without, "14:30", and what ends in a Z in UTC.
struct WrittenTime {
  std::tm parts{};
  bool isUtc = false, hasDate = false;
};
/// The beginning of this day, or of the one before.
std::optional<WrittenTime> NamedDay(const std::string& text, UtcTime now) {
  if (text != "today" && text != "yesterday") return std::nullopt;
  WrittenTime day{.parts = fmt::localtime(std::chrono::system_clock::to_time_t(now)),
                  .hasDate = true};
  if (text == "yesterday") {
    --day.parts.tm_mday;
    SetTimeOfDay(day.parts, 12, 0, 0);
    day.parts = fmt::localtime(mktime(&day.parts));  // of the month before, perhaps
  }
  SetTimeOfDay(day.parts, 0, 0, 0);
  return day;
}

std::optional<WrittenTime> WrittenTimeIn(const std::string& text, UtcTime now) {
  if (auto day = NamedDay(text, now)) return day;
  static const std::regex form(R"((?=\d)(?:(\d{4})-(\d\d?)-(\d\d?)(?:[ T](?=\d)|(?=Z?$)))?)"
                               R"((?:(\d\d?):(\d\d)(?::(\d\d))?)?(Z)?)");
  std::smatch part;
  if (!std::regex_match(text, part, form)) return std::nullopt;
  const auto number = [&](std::size_t i) { return part[i].matched ? std::stoi(part[i]) : 0; };
  const auto present = std::chrono::system_clock::to_time_t(now);
  WrittenTime time{.isUtc = part[7].matched, .hasDate = part[1].matched};
  time.parts = time.isUtc ? fmt::gmtime(present) : fmt::localtime(present);
  if (time.hasDate && !SetDate(time.parts, number(1), number(2), number(3))) return std::nullopt;
  if (!SetTimeOfDay(time.parts, number(4), number(5), number(6))) return std::nullopt;
  return time;
}

/// In the hour that comes twice a year there are two of them. One in the hour that is left out is
/// read by the time before the change.
UtcTime MomentOf(const WrittenTime& written, Which which) {
  auto parts = written.parts;
  if (written.isUtc) return UtcTime(std::chrono::seconds(timegm(&parts)));
  std::vector<std::time_t> moments;
  for (const int isSummer : {1, 0}) {
    parts = written.parts;
    parts.tm_isdst = isSummer;
    const auto moment = mktime(&parts);
    const bool isIt =
        parts.tm_hour == written.parts.tm_hour && parts.tm_min == written.parts.tm_min;
    if (isIt || (isSummer == 0 && moments.empty())) moments.push_back(moment);
  }
  const auto [first, last] = std::minmax_element(moments.begin(), moments.end());
  return UtcTime(std::chrono::seconds(which == Which::kFirst ? *first : *last));
}

}  // namespace

UtcTime MomentIn(const std::string& text, UtcTime now, Which which) {
  if (const auto before = Before(text, now)) return *before;
  auto written = WrittenTimeIn(text, now);
  if (!written)
    throw Failure(failure_number::kTypeMismatch,
                  fmt::format("\"{}\" is no time: say \"2026-11-26 14:30\", \"2026-11-26\", "
                              "\"14:30\", \"today\", \"yesterday\", \"3d\", \"12h\" or \"30m\".",
                              text));
  const bool isToCome = !written->hasDate && MomentOf(*written, Which::kFirst) > now;
  if (isToCome) --written->parts.tm_mday;
  return MomentOf(*written, which);
}

}  // namespace ostrel
