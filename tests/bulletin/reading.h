// What tests of bulletins say in few words.
#pragma once

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <optional>
#include <string>
#include <vector>

#include "bulletin/bulletin.h"
#include "bulletin/dates.h"

namespace ostrel {

/// "2018-07-19 20:54", "-" for none.
inline std::string Told(const std::optional<UtcTime>& time) {
  return time ? fmt::format("{:%Y-%m-%d %H:%M}", fmt::gmtime(*time)) : "-";
}

inline std::string Told(const std::vector<std::string>& areas) {
  return fmt::format("{}", fmt::join(areas, " "));
}

/// "NEW KDMX TO.W 43 2018-07-19 20:54 2018-07-19 21:45", behind it "test" or "damaged".
inline std::string Told(const Event& event) {
  return fmt::format("{} {} {}.{} {} {} {}{}{}", event.action, event.office, event.phenomenon,
                     event.significance, event.number.value_or(-1), Told(event.begins),
                     Told(event.ends), event.isTest.value_or(false) ? " test" : "",
                     event.isWhole ? "" : " damaged");
}

inline std::string Told(const Polygon& polygon) {
  std::vector<std::string> places;
  for (const auto& [latitude, longitude] : polygon)
    places.push_back(fmt::format("{:.2f},{:.2f}", latitude, longitude));
  return Told(places);
}

/// A line for each segment: areas; until; events; corners.
inline std::string Told(const Bulletin& bulletin) {
  std::string text;
  for (const auto& segment : bulletin.segments) {
    text += Told(segment.areas) + "; " + Told(segment.until);
    for (const auto& event : segment.events) text += "; " + Told(event);
    for (const auto& polygon : segment.polygons) text += "; " + Told(polygon);
    text += '\n';
  }
  return text;
}

inline UtcTime At(int year, int month, int day, int hour = 0, int minute = 0) {
  return MomentOf(year, month, day, hour, minute).value();
}

}  // namespace ostrel
