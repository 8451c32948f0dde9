// Places in bulletins: the outline of a warned area, and the movement of a storm.
#pragma once

#include <optional>
#include <span>
#include <string_view>

#include "bulletin/bulletin.h"
#include "bulletin/codes.h"

namespace ostrel {

/// A polygon with more corners, or corners further apart, is damaged: the service draws at most 20
/// (NWS directive 10-1701), and none over a third of the country.
inline constexpr std::size_t kMostCorners = 200;
inline constexpr double kMostLatitudes = 20, kMostLongitudes = 30;  // degrees

template <typename What>
struct Placed {
  std::size_t lines = 0;     // that it takes
  std::optional<What> what;  // nothing when it is damaged
};

/// "LAT...LON 4206 9336 4224 9336 4229 9279" (NWS directive 10-1701): hundredths of degrees,
/// latitudes with four digits, longitudes with four, or with five from 100 on; the storm centres
/// write both as one word of eight, without the hundreds. A longitude of four digits below 40
/// degrees lacks its hundreds as well: the country has none. It may go on over lines. Nothing when
/// no such line is at the front of `lines`. Signs are those of the office.
std::optional<Placed<Polygon>> ReadPolygon(std::span<const std::string_view> lines,
                                           std::optional<Hemispheres> signs);

/// "TIME...MOT...LOC 2054Z 269DEG 22KT 4215 9326": time, where it comes from, speed, and where it
/// is, one place or a line of them.
std::optional<Placed<Motion>> ReadMotion(std::span<const std::string_view> lines,
                                         std::optional<Hemispheres> signs);

}  // namespace ostrel
