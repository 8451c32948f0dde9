// Where the listener is, and whether an event is in force there.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bulletin/areas.h"
#include "bulletin/bulletin.h"

namespace ostrel {

struct Home {
  std::optional<Position> place;
  std::vector<std::string> areas;  // "IAC169", "IAZ048"
};

/// "42.03,-93.62": latitude and longitude in degrees, north and east positive. Throws
/// std::runtime_error with a text for the listener.
Position ReadPlace(std::string_view text);

/// "IAC169,IAZ048": codes of counties and zones. Throws std::runtime_error likewise.
std::vector<std::string> ReadAreaCodes(std::string_view text);

/// Whether what holds for `segment`, in `areas` of it, holds at home. An outline decides where
/// there is one and home has a place; a place at its edge, by what an outline is rounded to, is
/// within it. Else the codes decide: a county lies in its state and in its zones, and a zone that
/// touches a county of home is taken for one of home.
bool IsAtHome(const Home& home, const Segment& segment, const std::vector<std::string>& areas);

}  // namespace ostrel
