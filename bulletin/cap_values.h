// Values of CAP messages (OASIS CAP 1.2, section 3).
#pragma once

#include <optional>
#include <string_view>

#include "bulletin/bulletin.h"

namespace ostrel {

/// Takes what stands up to the next blank or line end off `text`; empty where nothing is left.
std::string_view TakeCapPart(std::string_view& text);

/// "2018-07-19T15:54:00-05:00", in UTC.
std::optional<UtcTime> ReadCapTime(std::string_view text);

/// "42.06,-93.36 42.24,-93.36 42.29,-92.79 42.06,-93.36": degrees, at least three corners.
std::optional<Polygon> ReadCapPolygon(std::string_view text);

/// "42.06,-93.36 15": centre, and kilometres around it.
std::optional<Circle> ReadCapCircle(std::string_view text);

}  // namespace ostrel
