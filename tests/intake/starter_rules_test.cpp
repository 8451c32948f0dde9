#include <fmt/format.h>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

#include "intake/routing_rules.h"
#include "platform/linux/linux_files.h"
#include "platform/virtual/virtual_clock.h"
#include "platform/virtual/virtual_desk.h"

namespace ostrel {
namespace {

class SilentReporting : public Reporting {
 public:
  void WriteLog(std::string_view, std::string_view) override {}
  void ReportError(const Failure&, std::string_view, std::string_view) override {}
};

// An operator who typed the lists that come with the program would meet no refusal and end up with
// the same files.
TEST(StarterRules, AreWhatAnOperatorCouldHaveEntered) {
  const std::string folder = OSTREL_SOURCE_DIR "/packaging/station";
  VirtualClock clock(UtcTime{});
  LinuxFiles files(clock);
  VirtualDialogs dialogs;
  SilentReporting reporting;
  ostrel::Setup setup;
  RoutingRules rules({files, dialogs, reporting, setup, folder});
  for (std::size_t list = 0; list < kRuleListCount; ++list) {
    std::ifstream file(fmt::format("{}/RtList{}.txt", folder, list), std::ios::binary);
    ASSERT_TRUE(file.is_open()) << list;
    std::size_t count = 0;
    for (std::string line; std::getline(file, line); ++count) {
      ASSERT_TRUE(line.ends_with('\r')) << line;
      line.pop_back();
      const CopiesEntry copies = ParseCopiesEntry(line);
      const bool isCopies = list == kRuleListCount - 1;
      if (isCopies) setup.lblCopies.Set(fmt::format("{}", copies.count));
      setup.pri1inbox[list].Set(isCopies ? copies.keyword : line);
      rules.AddKeyword(list);
      EXPECT_TRUE(dialogs.messages.empty()) << line << ": " << dialogs.messages.back().text;
      ASSERT_EQ(setup.SetupPriList[list].size(), count + 1) << line;
      EXPECT_EQ(setup.SetupPriList[list][count], line);
    }
  }
}

}  // namespace
}  // namespace ostrel
