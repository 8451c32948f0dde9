// Pieces of HTML of what strangers wrote.
#pragma once

#include <string>
#include <string_view>

#include "base/time.h"

namespace ostrel {

/// `text` on one line: nothing in it is markup, nor a control character, in content and in quoted
/// attributes.
std::string Html(std::string_view text);

/// The same of many lines, which stay lines; blanks stand for a tab.
std::string HtmlLines(std::string_view text);

/// A moment that the browser shows in its own language and zone; without scripts it stands there in
/// the zone of this process.
std::string HtmlTime(UtcTime time);

/// `name` as a part of a path: all but letters and digits with percent signs.
std::string PathPart(std::string_view name);

}  // namespace ostrel
