// A bulletin's text as its lines.
#pragma once

#include <string_view>
#include <vector>

namespace ostrel {

/// The lines of `text` without blanks and control characters around them: what transmission puts
/// there (start and end of a message, a carriage return or two) is part of none. A line ends with
/// LF, or with CR, however many of them.
std::vector<std::string_view> BulletinLines(std::string_view text);

}  // namespace ostrel
