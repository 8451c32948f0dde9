// Lines for people that have a form: headlines, and the tags of warnings.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "bulletin/bulletin.h"

namespace ostrel {

/// "...WINTER STORM WARNING IN EFFECT UNTIL 6 PM..." at the front of `lines`, over at most eight
/// lines, as one line without its dots; nothing when there is none.
std::optional<std::string> ReadHeadline(std::span<const std::string_view> lines);

/// "HAIL...1.00IN" (NWS directive 10-511): a name of the table of tags, dots, and what is said.
/// "SOURCE", "HAZARD" and "IMPACT" go on up to an empty line. Nothing for any other line.
std::optional<Tag> ReadTag(std::span<const std::string_view> lines);

}  // namespace ostrel
