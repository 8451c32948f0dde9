// An event in force in words for a listener.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "bulletin/in_force.h"

namespace ostrel {

struct ShownEvent {
  std::string identity;
  std::string title;  // "Tornado Warning"
  /// 'W' warning, 'A' watch, 'Y' advisory, or another letter; ' ' where none is told.
  char significance = ' ';
  std::vector<std::string> codes;  // "IAC127"; empty where it has but an outline
  std::string areas;               // the same in words: "Marshall, Story IA"
  std::string headline;            // as the product has it; empty where it has none
  std::optional<UtcTime> begins;   // in the future
  std::optional<UtcTime> until;    // nothing: until further notice
  UtcTime since, heard;
  bool isCertain = true;
  std::string product;  // its name in the folder
  std::vector<Polygon> polygons;
};

/// What it is drawn as: "warning", "watch" or "advisory", which is all else.
const char* ClassOf(const ShownEvent& event);

/// The event of `row`, of what FindInForce found at `now`, that `told` tells. Texts are as the
/// product has them.
ShownEvent Describe(const EventInForce& row, const ReceivedBulletin& told, UtcTime now);

}  // namespace ostrel
