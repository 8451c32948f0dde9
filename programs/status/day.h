// The last 24 hours of a station, for the page: a sentence and five drawings, each with its words.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/time.h"
#include "programs/status/reports.h"

namespace ostrel {

/// A moment of the last 24 hours is told as a part of them: 0 is where they begin, 1 is now.
struct Stretch {
  double from = 0, to = 0;
  std::optional<double> value;  // nothing: not known
};

struct Tick {
  double at = 0;
  std::string label;
};

struct Drawing {
  std::string id, title, description;
  std::vector<Stretch> course;  // without a hole, from 0 to 1
  double top = 1;               // the value whose bar has the full height
  std::string topLabel;
};

/// An SVG that is as wide as its place, its text unscaled. Nothing in it is escaped.
std::string Draw(const Drawing& drawing, const std::vector<Tick>& ticks);

/// The station's answer to "day", asked at `now`, as a piece of HTML that takes nothing but numbers
/// from it. Times are those of the zone of this process. Throws nlohmann::json::exception for what
/// is no such answer.
std::string DayOf(const Status& day, UtcTime now);

}  // namespace ostrel
