// The pattern matcher against a slow one that follows the words of its definition.
#include <optional>

#include "intake/match_pattern.h"
#include "tests/fuzz/fuzz_support.h"

namespace ostrel {
namespace {

/// Nothing for a list that is malformed.
std::optional<bool> IsIn(unsigned char c, std::string_view list) {
  bool found = list.starts_with('-') && c == '-';
  if (list.starts_with('-')) list.remove_prefix(1);
  while (!list.empty()) {
    const bool isRange = list.size() >= 3 && list[1] == '-';
    const auto low = static_cast<unsigned char>(list[0]);
    const auto high = isRange ? static_cast<unsigned char>(list[2]) : low;
    if (low > high) return std::nullopt;
    found = found || (c >= low && c <= high);
    list.remove_prefix(isRange ? 3 : 1);
  }
  return found;
}

bool MatchSlowly(std::string_view text, std::string_view pattern) {
  if (pattern.empty()) return text.empty();
  const char head = pattern[0];
  if (head == '*') {
    return MatchSlowly(text, pattern.substr(1)) ||
           (!text.empty() && MatchSlowly(text.substr(1), pattern));
  }
  if (text.empty()) return false;
  std::size_t taken = 1;
  bool fits = head == '?' || text[0] == head;
  if (head == '#') fits = text[0] >= '0' && text[0] <= '9';
  if (head == '[') {
    const auto end = pattern.find(']');
    if (end == std::string_view::npos) return false;
    auto list = pattern.substr(1, end - 1);
    const bool isNegated = !list.empty() && list[0] == '!';
    if (isNegated) list.remove_prefix(1);
    const auto isMember = IsIn(static_cast<unsigned char>(text[0]), list);
    if (!isMember) return false;
    fits = *isMember != isNegated;
    taken = end + 1;
  }
  return fits && MatchSlowly(text.substr(1), pattern.substr(taken));
}

}  // namespace
}  // namespace ostrel

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ostrel;
  auto input = AsText(data, size);
  const auto text = TakePart(input);
  const bool matches = MatchPattern(text, input);
  constexpr std::size_t kShort = 10;  // the slow one takes exponential time
  if (text.size() <= kShort && input.size() <= 2 * kShort)
    Demand(matches == MatchSlowly(text, input), "fast and slow matcher agree");
  return 0;
}
