#include "ident/morse_code.h"

#include <array>
#include <fstream>
#include <gtest/gtest.h>
#include <set>

namespace ostrel {
namespace {

TEST(MorseCode, ElementsFollowTheTableToTheColumn) {
  const std::array<const char*, 3> cases[] = {
      // table, text, elements
      {"D-..   \r\nE.     \r\n", "DE E", "#!-..!.!#.!#"},
      {"E.     \r\n", "E  E", "#!.!##.!#"},
      {"E.     \r\n", "EXE", "#!.!!.!#"},                      // X is not in the table
      {"E   .  \r\nE-     \r\n", "E", "#!.!#"},                // the first line counts
      {"e-     \r\nE.     \r\n", "E", "#!.!#"},                // in its own case
      {"E.\r\nT-     \r\n", "E", "#!.\n\rT-!#"},               // a short line reads on
      {"K-.-   \nM--    \rN-.     ", "KMN", "#!-.-!--!-.!#"},  // all line ends
      {"..-.-.-\r\n---....-\r\n", ".-", "#!.-.-.-!--....!#"},  // signs that look like code
      {"", "E", "#!!#"},
      // a mark in front; Ö has a line, Ä has none, half of Ö is nothing
      {"\xEF\xBB\xBF\xC3\x96---.   \n", "\xC3\x96\xC3\x84\xC3", "#!---.!!!#"},
  };
  for (const auto& [table, text, elements] : cases)
    EXPECT_EQ(MorseElements(text, JoinMorseTable(table)), elements) << text << " by " << table;
}

TEST(MorseCode, TheTimingFactorIsThirtyThreeLessTheSpeed) {
  const std::pair<const char*, int> cases[] = {{"25", 8},      {"32", 1},  {"33", 8},
                                               {"fast", 33},   {"-7", 40}, {"32.5", 8},
                                               {"20 wpm", 13}, {"31.5", 2}};
  for (const auto& [speed, factor] : cases) EXPECT_EQ(TimingFactor(speed), factor) << speed;
}

TEST(MorseTable, CodesEverySignOnceAndInSevenColumns) {
  std::ifstream file(OSTREL_SOURCE_DIR "/packaging/station/RtMorse.txt", std::ios::binary);
  std::set<char> signs;
  for (std::string line; std::getline(file, line);) {
    EXPECT_TRUE(line.size() == 8 && line.back() == '\r') << "the next one is read along: " << line;
    EXPECT_TRUE(signs.insert(line.front()).second) << "listed twice: " << line;
  }
  EXPECT_EQ(signs.size(), 49U);
}

}  // namespace
}  // namespace ostrel
