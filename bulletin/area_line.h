// The line that says for which areas a segment is.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "bulletin/dates.h"

namespace ostrel {

/// "IAC153-IAZ048-050>052-151500-" (NWS directive 10-1702, universal geographic code): two letters
/// of a state or of waters, C for counties or Z for zones, three digits or ALL; what follows
/// without letters is of the same state; ">" spans a range; at the end day, hour and minute, UTC,
/// when the text is out of date. It may go on over lines.
struct AreaLine {
  std::size_t lines = 0;  // that it takes
  /// False when something in it has no such form, or its end is missing: nothing of it is certain,
  /// since nobody knows what else it named.
  bool isWhole = false;
  std::size_t named = 0;           // how many areas were taken, also of one that is not whole
  std::vector<std::string> areas;  // ranges expanded, sorted, each once
  std::optional<DayTime> until;    // nothing for a time that is none
};

/// More areas than any line names.
inline constexpr std::size_t kMostAreas = 2000;

/// The area line at the front of `lines`; nothing when there is none.
std::optional<AreaLine> ReadAreaLine(std::span<const std::string_view> lines);

}  // namespace ostrel
