#include "listen/home.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <numbers>
#include <stdexcept>

#include "bulletin/letters.h"

namespace ostrel {
namespace {

/// Outlines have hundredths of degrees.
constexpr double kRounding = 0.01;
constexpr double kKilometresOfDegree = 111.2;

std::optional<double> ReadDegrees(std::string_view text, double most) {
  double degrees = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), degrees);
  const bool isRead = error == std::errc{} && end == text.data() + text.size();
  return isRead && std::abs(degrees) <= most ? std::optional(degrees) : std::nullopt;
}

/// Degrees of latitude from `from`, east and north.
struct Offset {
  double east, north;
};
Offset OffsetOf(Position from, Position to) {
  const double narrowing = std::cos(from.latitude * std::numbers::pi / 180);
  return {(to.longitude - from.longitude) * narrowing, to.latitude - from.latitude};
}

/// The distance of the origin from the line between two places.
double DistanceOf(Offset a, Offset b) {
  const Offset way{b.east - a.east, b.north - a.north};
  const double length = way.east * way.east + way.north * way.north;
  const double along = length == 0 ? 0 : -(a.east * way.east + a.north * way.north) / length;
  const double part = std::clamp(along, 0.0, 1.0);
  return std::hypot(a.east + part * way.east, a.north + part * way.north);
}

bool Contains(const Polygon& polygon, Position place) {
  bool isInside = false;
  for (std::size_t i = 0; i < polygon.size(); ++i) {
    const auto a = OffsetOf(place, polygon[i]);
    const auto b = OffsetOf(place, polygon[(i + 1) % polygon.size()]);
    if (DistanceOf(a, b) <= kRounding) return true;
    if ((a.north > 0) == (b.north > 0)) continue;
    if (a.east - a.north * (b.east - a.east) / (b.north - a.north) > 0) isInside = !isInside;
  }
  return isInside;
}

bool Contains(const Circle& circle, Position place) {
  const auto [east, north] = OffsetOf(place, circle.centre);
  return std::hypot(east, north) <= circle.radius / kKilometresOfDegree + kRounding;
}

bool IsPartOf(const std::string& county, const std::string& zone) {
  const auto* const area = Areas::Built().Find(zone);
  return area != nullptr && std::ranges::find(area->counties, county) != area->counties.end();
}

bool Touch(const std::string& one, const std::string& other) {
  const bool isWholeState = other.ends_with("000") && one.starts_with(other.substr(0, 3));
  return one == other || isWholeState || IsPartOf(one, other) || IsPartOf(other, one);
}

}  // namespace

Position ReadPlace(std::string_view text) {
  const auto comma = std::min(text.find(','), text.size());
  const auto latitude = ReadDegrees(text.substr(0, comma), 90);
  const auto longitude = ReadDegrees(text.substr(std::min(comma + 1, text.size())), 180);
  if (!latitude || !longitude)
    throw std::runtime_error(fmt::format("\"{}\" is no place, as in 42.03,-93.62", text));
  return {*latitude, *longitude};
}

std::vector<std::string> ReadAreaCodes(std::string_view text) {
  std::vector<std::string> codes;
  for (auto word = TakeWord(text); !word.empty(); word = TakeWord(text)) {
    const bool isCode = word.size() == 6 && ConsistsOf(word.substr(0, 2), IsUpper) &&
                        (word[2] == 'C' || word[2] == 'Z') && ConsistsOf(word.substr(3), IsDigit);
    if (!isCode)
      throw std::runtime_error(
          fmt::format("\"{}\" is no code of a county or zone, as in IAC169", word));
    codes.emplace_back(word);
  }
  return codes;
}

bool IsAtHome(const Home& home, const Segment& segment, const std::vector<std::string>& areas) {
  if (home.place && !(segment.polygons.empty() && segment.circles.empty())) {
    const auto contains = [&](const auto& outline) { return Contains(outline, *home.place); };
    return std::ranges::any_of(segment.polygons, contains) ||
           std::ranges::any_of(segment.circles, contains);
  }
  return std::ranges::any_of(home.areas, [&](const auto& mine) {
    return std::ranges::any_of(areas, [&](const auto& warned) { return Touch(mine, warned); });
  });
}

}  // namespace ostrel
