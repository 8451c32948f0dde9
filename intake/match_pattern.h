// The pattern language of the rule lists.
#pragma once

#include <string_view>

namespace ostrel {

/// True when the whole of `text` matches the whole of `pattern`, by exact bytes: `?` any one
/// character, `*` any run, `#` one digit, [list] one of the list (A-Z is a range), [!list] one not
/// in it, anything else itself. A malformed pattern (an open bracket, a falling range) matches
/// nothing. Needs no memory; time is at worst the product of the two lengths.
bool MatchPattern(std::string_view text, std::string_view pattern);
/// False for a malformed one.
bool IsPattern(std::string_view pattern);

}  // namespace ostrel
