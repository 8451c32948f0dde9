// The map of the listener's page: what is in force, drawn over the outlines of counties.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "listen/shown_event.h"

namespace ostrel {

/// An SVG without a network: borders, the warned areas of `events` (outlines where they have any,
/// else their counties, of a zone all that it covers), and home. It shows what is near home;
/// without a home, what is near the first event. Empty where there is neither, or nothing of it is
/// on the map.
std::string MapSvg(std::optional<Position> home, const std::vector<const ShownEvent*>& events);

}  // namespace ostrel
