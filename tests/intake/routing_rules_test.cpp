#include "intake/routing_rules.h"

#include <fmt/format.h>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

#include "base/text.h"
#include "platform/linux/linux_files.h"
#include "platform/virtual/virtual_clock.h"
#include "platform/virtual/virtual_desk.h"
#include "tests/support/forwarding_files.h"
#include "tests/support/temp_folder.h"

namespace ostrel {
namespace {

using Lines = std::vector<std::string>;

class UnreadableFiles : public ForwardingFiles {
 public:
  using ForwardingFiles::ForwardingFiles;
  std::string ReadAll(const std::string& p) override {
    if (p == unreadable) throw Failure(failure_number::kDeviceError, "Device I/O error");
    return real_.ReadAll(p);
  }
  void WriteAll(const std::string& p, std::string_view c) override {
    if (p == unwritable) throw Failure(failure_number::kDiskFull, "Disk full");
    real_.WriteAll(p, c);
  }
  std::string unreadable, unwritable;
};

class RoutingRulesTest : public testing::Test, public Reporting {
 protected:
  void WriteLog(std::string_view, std::string_view) override {}
  void ReportError(const Failure&, std::string_view procedure,
                   std::string_view additional) override {
    reported.push_back(std::string(procedure).append(additional));
  }

  /// Enters `keyword`; returns the refusal's title and text, or nothing.
  std::string Enter(std::size_t list, const std::string& keyword) {
    dialogs.messages.clear();
    setup.pri1inbox[list].Set(keyword);
    rules.AddKeyword(list);
    if (dialogs.messages.empty()) return "";
    EXPECT_EQ(dialogs.messages[0].icon, MessageIcon::kExclamation);
    EXPECT_EQ(setup.pri1inbox[list].Get(), ToUpper(keyword)) << "is left standing";
    return dialogs.messages[0].title + "|" + dialogs.messages[0].text;
  }
  Lines Entries(std::size_t list) const {
    return {setup.SetupPriList[list].begin(), setup.SetupPriList[list].end()};
  }
  std::string PathOf(int list) const {
    return folder.path() + "/RtList" + std::to_string(list) + ".txt";
  }
  void Lay(int list, const std::string& text) {
    std::ofstream(PathOf(list), std::ios::binary) << text;
  }
  std::string Content(int list) const {
    std::ifstream file(PathOf(list), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  TempFolder folder;
  VirtualClock clock{UtcTime{}};
  LinuxFiles realFiles{clock};
  UnreadableFiles files{realFiles};
  VirtualDialogs dialogs;
  ostrel::Setup setup;
  Lines reported;
  RoutingRules rules{{files, dialogs, *this, setup, folder.path()}};
};

TEST_F(RoutingRulesTest, AKeywordIsRefusedForTheFirstThingWrongWithIt) {
  const std::string wildcards =
      "Not enough information...|You have entered too many wildcard characters. \r\n"
      "Please be more specific.";
  const std::string letters =
      "Not enough information...|A product must contain at least two characters \r\n"
      "other than numbers or wildcards. Please be more specific.";
  const std::string periods =
      "Incorrect format ...|A keyword cannot contain two period characters. Try again.";
  const std::pair<const char*, std::string> cases[] = {
      {"ab*", ""},        {"zfp.txt", ""},        {"[!ab]*", ""},
      {"??x", wildcards}, {"A", wildcards},       {"?..?", letters},
      {"A1*#", letters},  {"\xC4\xD6X", letters}, {"..xx", periods}};
  for (const auto& [keyword, refusal] : cases) {
    EXPECT_EQ(Enter(3, keyword), refusal) << keyword;
    EXPECT_EQ(setup.pri1inbox[3].Get().empty(), refusal.empty()) << keyword;
  }
  EXPECT_EQ(Entries(3), (Lines{"AB*", "ZFP.TXT", "[!AB]*"}));
}

TEST_F(RoutingRulesTest, AKeywordStandsOnceInAllListsButCopies) {
  const std::pair<std::size_t, const char*> tabs[] = {{0, "Priority 1"},
                                                      {9, "Priority 10"},
                                                      {kCompressList, "Compress"},
                                                      {kDiscardList, "Discard"}};
  for (const auto& [list, tab] : tabs) {
    const std::string keyword = "ZFP" + std::to_string(list) + "*";
    ASSERT_EQ(Enter(list, keyword), "");
    for (const std::size_t other : {std::size_t{0}, list, kDiscardList})
      EXPECT_EQ(Enter(other, keyword), "Duplicate Keyword...|The keyword \"" + keyword +
                                           "\" already exists on the " + tab + " Tab.");
    setup.lblCopies.Set(" 3 ");
    EXPECT_EQ(Enter(kCopiesList, keyword), "") << "the copies list is compared with none";
  }
  rules.RemoveSelectedKeywords(kCopiesList, {});
  EXPECT_EQ(Entries(kCopiesList).size(), 4U);
  rules.RemoveSelectedKeywords(kCopiesList, {3, 0, 1});
  EXPECT_EQ(Entries(kCopiesList), Lines{"ZFP10* | C=3"});
}

TEST_F(RoutingRulesTest, ACopiesEntryIsAKeywordAndACount) {
  const struct {
    const char* entry;
    const char* keyword;
    int count;
  } cases[] = {{"ZFP* |C=12 OR SO", "ZFP*", 12},
               {"C=4ZFP* | C=3", "C=4ZFP*", 4},
               {"A B | X | C=2", "A B", 2},
               {"ZFP* | C=MANY", "ZFP*", 0}};
  for (const auto& [entry, keyword, count] : cases) {
    EXPECT_EQ(ParseCopiesEntry(entry).keyword, keyword) << entry;
    EXPECT_EQ(ParseCopiesEntry(entry).count, count) << entry;
  }
}

TEST_F(RoutingRulesTest, TheListFilesAreReadForgivinglyAndWrittenPlainly) {
  Lay(0, "  zfp* \r\n\r\n    \r\nA.B.C\nlast");
  Lay(2, "LOST*\r\n");
  Lay(12, "zfp* | c=3\r\nNO COUNT |\r\nNOBAR C=2\r\n  AFD* |C=2\r\n");
  files.unreadable = PathOf(2);
  rules.LoadRuleLists();
  EXPECT_EQ(Entries(0), (Lines{"ZFP*", "A.B.C", "LAST"})) << "loaded keywords are not checked";
  EXPECT_EQ(Entries(kCopiesList), (Lines{"ZFP* | C=3", "AFD* |C=2"}));
  EXPECT_EQ(Entries(1), Lines{}) << "a missing file is an empty list";
  EXPECT_EQ(reported, Lines{"LoadRuleLists File Name: " + PathOf(2)});

  files.unwritable = PathOf(5);
  EXPECT_EQ(rules.SaveRuleLists(), Lines{"RtList5.txt"});
  EXPECT_EQ(Content(0), "ZFP*\r\nA.B.C\r\nLAST\r\n");
  EXPECT_EQ(Content(2), "LOST*\r\n") << "what could not be read is not written over";
  EXPECT_FALSE(files.Exists(PathOf(5)));
  EXPECT_EQ(reported.back(), "SaveRuleLists File Name: " + PathOf(5));

  Enter(2, "new*");
  rules.SaveRuleLists();
  EXPECT_EQ(Content(2), "NEW*\r\n") << "until the operator has edited the list";
}

// An operator who typed the lists that come with the program would meet no refusal and end up with
// the same files.
TEST_F(RoutingRulesTest, TheListsOfANewStationAreWhatAnOperatorCouldHaveEntered) {
  const auto starter = [&](std::size_t list) {
    return files.ReadAll(fmt::format(OSTREL_SOURCE_DIR "/packaging/station/RtList{}.txt", list));
  };
  for (std::size_t list = 0; list < kRuleListCount; ++list) {
    ForEachLine(starter(list), [&](std::string_view line) {
      const auto copies = ParseCopiesEntry(std::string(line));
      setup.lblCopies.Set(std::to_string(copies.count));
      EXPECT_EQ(Enter(list, list == kCopiesList ? copies.keyword : std::string(line)), "") << line;
    });
  }
  rules.SaveRuleLists();
  for (std::size_t list = 0; list < kRuleListCount; ++list)
    EXPECT_EQ(Content(static_cast<int>(list)), starter(list)) << list;
}

}  // namespace
}  // namespace ostrel
