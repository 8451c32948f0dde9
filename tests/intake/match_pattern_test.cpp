#include "intake/match_pattern.h"

#include <gtest/gtest.h>

namespace ostrel {
namespace {

TEST(MatchPattern, FollowsThePatternLanguage) {
  const struct {
    const char *pattern, *matching, *other;  // null where there is no such text
  } rows[] = {{"", "", "A"},
              {"*", "", nullptr},
              {"ZFP*", "ZFPSFOCA.TXT", "zfpsfoca.txt"},
              {"A?B", "A.B", "AB"},
              {"RR#*", "RR3DMXIA.TXT", "RRSDMXIA.TXT"},
              {"*AB*ABZ", "XABYABZ", "XABYABZQ"},
              {"*.ZI[S,P]*", "A.ZI,X", "A.ZIX"},
              {"[A-C][0-9]", "C9", "D5"},
              {"[!A-C]#", "D9", "B0"},
              {"[!A-C]#", "D0", "D:"},
              {"[A!]", "!", "B"},
              {"[-A]", "-", "B"},
              {"[A-]", "-", "B"},
              {"[[]", "[", "]"},
              {"[*?#]", "*", "X"},
              {"]", "]", "["},
              {"[\x80-\xFF]", "\xE9", "E"},
              // malformed
              {"[A", nullptr, "[A"},
              {"[C-AB]", nullptr, "B"},
              {"[]", nullptr, "A"}};
  for (const auto& [pattern, matching, other] : rows) {
    EXPECT_TRUE(!matching || MatchPattern(matching, pattern)) << matching << " by " << pattern;
    EXPECT_FALSE(other && MatchPattern(other, pattern)) << other << " by " << pattern;
  }
}

}  // namespace
}  // namespace ostrel
