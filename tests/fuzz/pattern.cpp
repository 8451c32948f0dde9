// The pattern matcher against the C library's, where a pattern says the same to both.
#include <fnmatch.h>
#include <regex>

#include "intake/match_pattern.h"
#include "tests/fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ostrel;
  auto input = AsText(data, size);
  const std::string text(TakePart(input)), pattern(TakePart(input));
  const bool matches = MatchPattern(text, pattern);
  constexpr std::size_t kShort = 20;  // the library's takes exponential time
  if (text.size() > kShort || pattern.size() > kShort) return 0;
  // Brackets of single characters, rising ranges, and hyphens at the end.
  static const std::regex common(R"(([^[]|\[!?([^\]\[!^#-]|0-[0-9]|A-[A-Z])+-?\])*)"), digit("#");
  if (!std::regex_match(pattern, common)) return 0;
  const auto same = std::regex_replace(pattern, digit, "[0-9]");
  Demand(matches == (fnmatch(same.c_str(), text.c_str(), FNM_NOESCAPE) == 0),
         "both matchers agree");
  return 0;
}
