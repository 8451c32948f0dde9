#include "intake/rule_lists.h"

#include <gtest/gtest.h>

#include "base/text.h"
#include "intake/rule_matcher.h"
#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

class RuleListsTest : public testing::Test {
 protected:
  /// Enters `keyword`; returns the refusal's title and text, or nothing.
  std::string Enter(std::size_t list, const std::string& keyword) {
    auto& messages = station.machine.dialogs.messages;
    messages.clear();
    setup.pri1inbox[list].Set(keyword);
    station.station->actions().AddKeyword(list);
    EXPECT_EQ(setup.pri1inbox[list].Get(), messages.empty() ? "" : ToUpper(keyword));
    return messages.empty() ? "" : messages[0].title + "|" + messages[0].text;
  }
  std::string PathOf(std::size_t list) { return station.Path(fmt::format("RtList{}.txt", list)); }
  std::string Content(std::size_t list) { return station.ReadFile(PathOf(list)); }
  Lines ListOf(std::size_t list) { return Entries(setup.SetupPriList[list]); }

  VirtualStation station;
  ostrel::SetupFields& setup = station.setup();
};

TEST_F(RuleListsTest, AKeywordIsRefusedForTheFirstThingWrongWithIt) {
  station.Start();
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
  for (const auto& [keyword, refusal] : cases) EXPECT_EQ(Enter(3, keyword), refusal) << keyword;
  EXPECT_EQ(ListOf(3), (Lines{"AB*", "ZFP.TXT", "[!AB]*"}));
}

TEST_F(RuleListsTest, AKeywordStandsOnceInAllListsButCopies) {
  station.Start();
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
  station.station->actions().RemoveKeywords(kCopiesList, {});
  EXPECT_EQ(ListOf(kCopiesList).size(), 4U);
  station.station->actions().RemoveKeywords(kCopiesList, {3, 0, 1});
  EXPECT_EQ(ListOf(kCopiesList), Lines{"ZFP10* | C=3"});
}

TEST_F(RuleListsTest, TheListFilesAreReadForgivinglyAndWrittenPlainly) {
  station.WriteFile(PathOf(0), "\xEF\xBB\xBF  zfp* \r\n\r\n    \r\nA.B.C\n \xEF\xBB\xBF last");
  station.WriteFile(PathOf(2), "LOST*\r\n");
  station.Rule(5, "AFD*");
  station.WriteFile(PathOf(12), "zfp* | c=3\r\nNO COUNT |\r\nNOBAR C=2\r\n  AFD* |C=2\r\n");
  std::filesystem::remove(PathOf(1));
  station.files.readFault = [&](const std::string& path) {
    if (path == PathOf(2)) throw Failure(failure_number::kDeviceError, "Device I/O error");
  };
  station.files.writeFault = [&](const std::string& path) {
    if (path == PathOf(5)) throw Failure(failure_number::kDiskFull, "Disk full");
  };
  station.Start();
  EXPECT_EQ(ListOf(0), (Lines{"ZFP*", "A.B.C", "LAST"})) << "loaded keywords are not checked";
  EXPECT_EQ(ListOf(kCopiesList), (Lines{"ZFP* | C=3", "AFD* |C=2"}));
  const std::string unread = "RtList1.txt (missing), RtList2.txt (Device I/O error)";
  EXPECT_EQ(station.Messages("LoadRuleLists"),
            Lines{"Could not be read: " + unread +
                  ". Until they can, files that no rule names are kept in KvData/RtKept."});

  const auto leave = [&] {
    station.station->actions().ShowSetup();
    EXPECT_EQ(station.station->actions().LeaveSetup(), SaveOutcome::kHidden);
    Lines said;
    for (const auto& message : station.machine.dialogs.messages) said.push_back(message.text);
    station.machine.dialogs.messages.clear();
    return said;
  };
  const std::string unsaved =
      "These settings could not be saved: RtList5.txt (Disk full). They are in force, and are "
      "tried again when Setup is left and when the program ends.";
  EXPECT_EQ(leave(), (Lines{"These settings could not be loaded: " + unread + ".", unsaved}));
  EXPECT_EQ(leave(), Lines{}) << "nothing is new";
  EXPECT_EQ(Content(0), "ZFP*\r\nA.B.C\r\nLAST\r\n");
  EXPECT_EQ(Content(2), "LOST*\r\n") << "what could not be read is not written over";
  EXPECT_FALSE(std::filesystem::exists(PathOf(1)));

  Enter(1, "new*");
  EXPECT_EQ(leave().back(), unsaved) << "there are new edits";
  EXPECT_EQ(Content(1), "NEW*\r\n") << "until the operator has edited the list";
  station.files.readFault = station.files.writeFault = nullptr;
  Enter(5, "last*");
  station.station->actions().ShowSetup();
  EXPECT_EQ(ListOf(2), Lines{"LOST*"}) << "until it can be read";
  station.station->Stop();
  EXPECT_EQ(Content(5), "AFD*\r\n") << "the end tries once more what the dialog was left with";
  EXPECT_EQ(Content(2), "LOST*\r\n") << "and it was not known then";
}

TEST_F(RuleListsTest, TheListsOfANewStationAreWhatAnOperatorCouldHaveEntered) {
  station.Start();
  for (std::size_t list = 0; list < kRuleListCount; ++list) {
    const auto shipped =
        station.ReadFile(fmt::format(OSTREL_SOURCE_DIR "/packaging/station/RtList{}.txt", list));
    ForEachLine(shipped, [&](std::string_view line) {
      const auto copies = ParseCopiesEntry(std::string(line));
      setup.lblCopies.Set(std::to_string(copies.count));
      EXPECT_EQ(Enter(list, list == kCopiesList ? copies.keyword : std::string(line)), "") << line;
    });
    EXPECT_EQ(fmt::format("{}\r\n", fmt::join(ListOf(list), "\r\n")),
              shipped + (shipped.empty() ? "\r\n" : ""));
  }
}

}  // namespace
}  // namespace ostrel
