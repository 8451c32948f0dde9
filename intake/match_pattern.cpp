#include "intake/match_pattern.h"

#include <optional>

namespace ostrel {

namespace {

struct BracketResult {
  bool matches;
  std::size_t length;  // of the bracket in the pattern, both ends included
};

/// Reads the members between the brackets and asks whether `c` is among them; nothing when a range
/// falls. A hyphen at either end of the list, or right behind a range, stands for itself.
std::optional<bool> IsMember(unsigned char c, std::string_view members) {
  bool found = false;
  for (std::size_t i = 0; i < members.size(); ++i) {
    const auto first = static_cast<unsigned char>(members[i]);
    const bool isRange =
        i + 2 < members.size() && members[i + 1] == '-' && !(i == 0 && first == '-');
    const auto last = isRange ? static_cast<unsigned char>(members[i + 2]) : first;
    if (last < first) return std::nullopt;
    found = found || (first <= c && c <= last);
    if (isRange) i += 2;
  }
  return found;
}

/// Matches `c` against the bracket that `pattern` begins with; nothing when it is malformed.
std::optional<BracketResult> MatchBracket(unsigned char c, std::string_view pattern) {
  const auto end = pattern.find(']');
  if (end == std::string_view::npos) return std::nullopt;
  auto members = pattern.substr(1, end - 1);
  const bool negated = members.starts_with('!');
  if (negated) members.remove_prefix(1);
  const auto found = IsMember(c, members);
  if (!found) return std::nullopt;
  return BracketResult{*found != negated, end + 1};
}

/// The number of pattern characters that the element at the start of `pattern` takes when it
/// matches `c`; 0 when it does not.
std::size_t MatchOne(char c, std::string_view pattern) {
  if (pattern.empty()) return 0;
  switch (pattern.front()) {
    case '?':
      return 1;
    case '#':
      return c >= '0' && c <= '9' ? 1 : 0;
    case '[': {
      const auto bracket = MatchBracket(static_cast<unsigned char>(c), pattern);
      return bracket && bracket->matches ? bracket->length : 0;
    }
    default:
      return pattern.front() == c ? 1 : 0;
  }
}

}  // namespace

bool MatchPattern(std::string_view text, std::string_view pattern) {
  // When something fails behind a star, only the last star need take one character more: an earlier
  // one could not lead further.
  constexpr auto kNone = std::string_view::npos;
  std::size_t t = 0, p = 0, starPattern = kNone, starText = 0;
  while (t < text.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      starPattern = ++p;
      starText = t;
    } else if (const auto length = MatchOne(text[t], pattern.substr(p)); length > 0) {
      p += length;
      ++t;
    } else if (starPattern != kNone) {
      p = starPattern;
      t = ++starText;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', p) == kNone;
}

bool IsPattern(std::string_view pattern) {
  for (auto open = pattern.find('['); open != std::string_view::npos; open = pattern.find('[')) {
    pattern.remove_prefix(open);
    const auto bracket = MatchBracket(0, pattern);
    if (!bracket) return false;
    pattern.remove_prefix(bracket->length);
  }
  return true;
}

}  // namespace ostrel
