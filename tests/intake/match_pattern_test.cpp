#include "intake/match_pattern.h"

#include <gtest/gtest.h>
#include <string>

namespace ostrel {
namespace {

TEST(MatchPattern, FollowsThePatternLanguage) {
  const std::pair<const char*, const char*> matching[] = {{"", ""},
                                                          {"", "*"},
                                                          {"ZFPSFOCA.TXT", "ZFP*"},
                                                          {"AXB", "A?B"},
                                                          {"RR3DMXIA.TXT", "RR#*"},
                                                          {"XABYABZ", "*AB*ABZ"},
                                                          {"A.ZI,X", "*.ZI[S,P]*"},
                                                          {"B5", "[A-C][0-9]"},
                                                          {"D5", "[!A-C]#"},
                                                          {"!", "[A!]"},
                                                          {"-", "[-A]"},
                                                          {"-", "[A-]"},
                                                          {"[", "[[]"},
                                                          {"*", "[*?#]"},
                                                          {"]", "]"}};
  for (const auto& [text, pattern] : matching)
    EXPECT_TRUE(MatchPattern(text, pattern)) << text << " against " << pattern;
  // The last ones are malformed, and match nothing.
  const std::pair<const char*, const char*> others[] = {{"ZFPSFOCA.TXT", "zfp*"},
                                                        {"ZFPSFOCA.TXT", "ZFP"},
                                                        {"A", ""},
                                                        {"AB", "A?B"},
                                                        {"RRSDMXIA.TXT", "RR#*"},
                                                        {"XABYABZQ", "*AB*ABZ"},
                                                        {"A.ZIX", "*.ZI[S,P]*"},
                                                        {"D5", "[A-C][0-9]"},
                                                        {"X", "[*?#]"},
                                                        {"[A", "[A"},
                                                        {"B", "[C-A]"},
                                                        {"A", "[]"}};
  for (const auto& [text, pattern] : others)
    EXPECT_FALSE(MatchPattern(text, pattern)) << text << " against " << pattern;
}

TEST(MatchPattern, AnswersAtOnceWhateverThePattern) {
  std::string stars;
  for (int i = 0; i < 40; ++i) stars += "*A";
  EXPECT_TRUE(MatchPattern(std::string(255, 'A'), stars));
  EXPECT_FALSE(MatchPattern(std::string(255, 'A'), stars + "[!A]"));
}

}  // namespace
}  // namespace ostrel
