// Products that strangers write, as bulletins and as CAP messages: what is read of them has the
// bounds that its readers count on.
#include "bulletin/bulletin.h"

#include <algorithm>

#include "tests/fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ostrel;
  const UtcTime now = std::chrono::sys_days(std::chrono::year(2026) / 5 / 16);
  const auto bulletin = ReadBulletin(AsText(data, size), now);
  for (const auto& segment : bulletin.segments) {
    Demand(std::ranges::is_sorted(segment.areas), "areas are sorted");
    Demand(std::ranges::adjacent_find(segment.areas) == segment.areas.end(), "each once");
    for (const auto& polygon : segment.polygons) {
      Demand(polygon.size() >= 3, "an outline has an inside");
      for (const auto& [latitude, longitude] : polygon)
        Demand(latitude >= -90 && latitude <= 90 && longitude >= -180 && longitude <= 180,
               "a corner is on this earth");
    }
    for (const auto& event : segment.events)
      Demand(!event.number || (*event.number >= 0 && *event.number <= 9999), "four digits");
  }
  return 0;
}
