#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <string>

namespace ostrel {
namespace {

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
