// What ostrel-feed --explain says of a product: an object of JSON, or sentences.
#pragma once

#include <string>
#include <string_view>

#include "bulletin/areas.h"
#include "bulletin/bulletin.h"

namespace ostrel {

/// One line without its end; its form is told in docs/bulletins.md.
std::string ExplainAsJson(std::string_view name, const Bulletin& bulletin);

/// Some lines, the areas by their names.
std::string ExplainAsText(std::string_view name, const Bulletin& bulletin, const Areas& areas);

/// "2026-05-16T15:00Z" or "2026-05-16T15:00:00Z". Throws Failure for any other text.
UtcTime ReadNow(std::string_view text);

}  // namespace ostrel
