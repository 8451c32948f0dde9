// The list of scheduled transmissions as the operator edits it.
#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

using Lines = std::vector<std::string>;

Lines Entries(VirtualStation& station) {
  return {station.setup().lstSchedule.begin(), station.setup().lstSchedule.end()};
}

TEST(ScheduleEntries, AreCheckedAndStoredInLowerCase) {
  VirtualStation station;
  station.Start();
  constexpr const char* kFormat =
      "The schedule is not formatted properly.\r\nClick More Information for the format. \r\n";
  constexpr const char* kTime =
      "The time you entered is not valid.\r\nEnter the time in the format hh:mm. \r\n"
      "For example: 08:00\r\n";
  struct Case {
    const char* text;
    const char* title;  // empty when nothing is said
    const char* message;
    Lines entries;  // afterwards
  };
  const Case cases[] = {
      {"8:00 /A /B", "Schedule", kFormat, {}},
      {"13:00/a /b", "Schedule", kFormat, {}},
      {"13:00", "Schedule", kFormat, {}},
      {" 13:00 /a", "Schedule", kFormat, {}},
      {"", "Schedule", kFormat, {}},
      {"25:00 /a /b", "Schedule Time", kTime, {}},
      {"12:60 /a /b", "Schedule Time", kTime, {}},
      {"1a:00 /a /b", "Schedule Time", kTime, {}},
      {"13:00 /In/File.TXT /Out/A B.txt", "", "", {"13:00 /in/file.txt /out/a b.txt"}},
      {"13:00 /IN/file.txt /OUT/a b.txt", "", "", {"13:00 /in/file.txt /out/a b.txt"}},
      {"23:59 /only", "", "", {"13:00 /in/file.txt /out/a b.txt", "23:59 /only"}},
  };
  auto& messages = station.machine.dialogs.messages;
  for (const auto& [text, title, message, entries] : cases) {
    messages.clear();
    station.setup().txtSchedule.Set(text);
    const auto after = station.station->operators().AddScheduleEntry();
    EXPECT_EQ(after == AfterEntry::kFocusEntryField, *title != '\0') << text;
    ASSERT_EQ(messages.size(), *title ? 1U : 0U) << text;
    if (*title) {
      EXPECT_EQ(messages[0].title, title) << text;
      EXPECT_EQ(messages[0].text, message) << text;
      EXPECT_EQ(messages[0].icon, MessageIcon::kQuestion) << text;
    }
    EXPECT_EQ(Entries(station), entries) << text;
    EXPECT_EQ(station.setup().txtSchedule.Get(), text);
  }
  EXPECT_EQ(station.ReadFile(station.Path("RtSched.txt")),
            "13:00 /in/file.txt /out/a b.txt\r\n23:59 /only\r\n");
}

TEST(ScheduleEntries, AreLoadedAsTheyStandAndRemovedTogetherWithOneRewrite) {
  VirtualStation station;
  station.WriteFile(station.Path("RtSched.txt"),
                    "  01:00 /A /B  \n123456789\r\nno time /c /d\r\n02:00 /e /f\r\n\r\n");
  station.Start();
  EXPECT_EQ(Entries(station), (Lines{"01:00 /A /B", "no time /c /d", "02:00 /e /f"}));

  int writes = 0;
  station.files.writeFault = [&](const std::string& path) {
    writes += path.ends_with("Sched.txt");
  };
  station.station->operators().RemoveScheduleEntries({});
  EXPECT_EQ(writes, 0);
  station.station->operators().RemoveScheduleEntries({0, 2});
  EXPECT_EQ(writes, 1);
  station.Restart();
  EXPECT_EQ(Entries(station), Lines{"no time /c /d"});
}

}  // namespace
}  // namespace ostrel
