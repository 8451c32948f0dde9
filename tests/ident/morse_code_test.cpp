#include "ident/morse_code.h"

#include <array>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <sstream>

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
  };
  for (const auto& [table, text, elements] : cases)
    EXPECT_EQ(MorseElements(text, JoinMorseTable(table)), elements) << text << " by " << table;
}

TEST(MorseCode, TheTimingFactorIsThirtyThreeLessTheSpeed) {
  const std::pair<const char*, int> cases[] = {{"25", 8},  {"32", 1},   {"33", 8},     {"fast", 33},
                                               {"-7", 40}, {"32.5", 8}, {"20 wpm", 13}};
  for (const auto& [speed, factor] : cases) EXPECT_EQ(TimingFactor(speed), factor) << speed;
}

// The signals of Recommendation ITU-R M.1677-1, part I, section 1, written in its order: letters
// (1.1.1), figures (1.1.2), punctuation marks and miscellaneous signs (1.1.3) that are one
// character in ASCII and not another's signal.
constexpr const char* kRecommendation =
    "A.- B-... C-.-. D-.. E. F..-. G--. H.... I.. J.--- K-.- L.-.. M-- N-. O--- P.--. "
    "Q--.- R.-. S... T- U..- V...- W.-- X-..- Y-.-- Z--.. 1.---- 2..--- 3...-- 4....- "
    "5..... 6-.... 7--... 8---.. 9----. 0----- ..-.-.- ,--..-- :---... ?..--.. '.----. "
    "--....- /-..-. (-.--. )-.--.- \".-..-. =-...- +.-.-. @.--.-. ";

TEST(MorseTable, CodesEverySignOnceAndInSevenColumns) {
  std::ifstream file(OSTREL_SOURCE_DIR "/packaging/station/RtMorse.txt", std::ios::binary);
  std::map<char, std::string> table;
  for (std::string line; std::getline(file, line);) {
    ASSERT_EQ(line.size(), 8U) << "seven columns and CR LF, or the next line is read along: "
                               << line;
    ASSERT_EQ(line.back(), '\r') << line;
    const std::string code = line.substr(1, line.find_last_not_of(" \r"));
    EXPECT_TRUE(table.emplace(line.front(), code).second) << "listed twice: " << line;
  }
  std::map<char, std::string> recommended;
  std::istringstream signs(kRecommendation);
  for (std::string sign; signs >> sign;) recommended.emplace(sign.front(), sign.substr(1));
  EXPECT_EQ(table, recommended);
}

}  // namespace
}  // namespace ostrel
