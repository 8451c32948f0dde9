#include "intake/match_pattern.h"

#include <gtest/gtest.h>
#include <string>

namespace ostrel {
namespace {

TEST(MatchPattern, FollowsThePatternLanguage) {
  struct {
    const char* text;
    const char* pattern;
    bool matches;
  } const cases[] = {
      {"ZFPSFOCA.TXT", "ZFP*", true},
      {"ZFPSFOCA.TXT", "zfp*", false},
      {"ZFPSFOCA.TXT", "ZFP", false},
      {"", "", true},
      {"", "*", true},
      {"A", "", false},
      {"AXB", "A?B", true},
      {"AB", "A?B", false},
      {"RR3DMXIA.TXT", "RR#*", true},
      {"RRSDMXIA.TXT", "RR#*", false},
      {"SVRDMXIA.TXT", "SVR???IA.TXT", true},
      {"XABYABZ", "*AB*ABZ", true},
      {"XABYABZQ", "*AB*ABZ", false},
      // brackets
      {"A.ZIS", "*.ZI[S,P]*", true},
      {"A.ZI,X", "*.ZI[S,P]*", true},
      {"A.ZIX", "*.ZI[S,P]*", false},
      {"B5", "[A-C][0-9]", true},
      {"D5", "[A-C][0-9]", false},
      {"D5", "[!A-C]#", true},
      {"!", "[A!]", true},
      {"-", "[-A]", true},
      {"-", "[A-]", true},
      {"[", "[[]", true},
      {"*", "[*?#]", true},
      {"X", "[*?#]", false},
      {"]", "]", true},
      // malformed: matches nothing
      {"A", "[A", false},
      {"[A", "[A", false},
      {"B", "[C-A]", false},
      {"A", "[]", false},
  };
  for (const auto& [text, pattern, matches] : cases)
    EXPECT_EQ(MatchPattern(text, pattern), matches) << text << " against " << pattern;
}

TEST(MatchPattern, AnswersAtOnceWhateverThePattern) {
  const std::string name(255, 'A');
  EXPECT_FALSE(MatchPattern(name, std::string(40, '*') + "B"));
  std::string stars;
  for (int i = 0; i < 40; ++i) stars += "*A";
  EXPECT_TRUE(MatchPattern(name, stars));
  EXPECT_FALSE(MatchPattern(name, stars + "[!A]"));
}

}  // namespace
}  // namespace ostrel
