// The list of scheduled transmissions as the operator edits it.
#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

TEST(ScheduleEntries, AreCheckedAndStoredInLowerCase) {
  VirtualStation station;
  station.Start();
  const auto enter = [&](const std::string& entry) {
    station.machine.dialogs.messages.clear();
    station.setup().txtSchedule.Set(entry);
    const auto after = station.station->operators().AddScheduleEntry();
    const auto& messages = station.machine.dialogs.messages;
    EXPECT_EQ(after == AfterEntry::kFocusEntryField, !messages.empty()) << entry;
    return messages.empty() ? "" : messages[0].title + "|" + messages[0].text;
  };
  for (const auto* entry : {"8:00 /A /B", "13:00/a /b", "13:00", " 13:00 /a", ""})
    EXPECT_EQ(enter(entry),
              "Schedule|The schedule is not formatted properly.\r\n"
              "Click More Information for the format. \r\n");
  for (const auto* entry : {"24:00 /a /b", "12:60 /a /b", "1a:00 /a /b", "12-00 /a /b"})
    EXPECT_EQ(enter(entry),
              "Schedule Time|The time you entered is not valid.\r\n"
              "Enter the time in the format hh:mm. \r\nFor example: 08:00\r\n");
  for (const auto* entry :
       {"13:00 /In/File.TXT /Out/A B.txt", "13:00 /IN/file.txt /OUT/a b.txt", "23:59 /only"})
    EXPECT_EQ(enter(entry), "");
  EXPECT_EQ(Entries(station.setup().lstSchedule),
            (Lines{"13:00 /in/file.txt /out/a b.txt", "23:59 /only"}));
  EXPECT_EQ(station.ReadFile(station.Path("RtSched.txt")),
            "13:00 /in/file.txt /out/a b.txt\r\n23:59 /only\r\n");
}

TEST(ScheduleEntries, AreLoadedAsTheyStandAndRemovedTogetherWithOneRewrite) {
  VirtualStation station;
  station.WriteFile(station.Path("RtSched.txt"),
                    "  01:00 /A /B  \n123456789\r\nno time /c /d\r\n02:00 /e /f\r\n\r\n");
  station.Start();
  EXPECT_EQ(Entries(station.setup().lstSchedule),
            (Lines{"01:00 /A /B", "no time /c /d", "02:00 /e /f"}));

  int writes = 0;
  station.files.writeFault = [&](const std::string& path) {
    writes += path.ends_with("Sched.txt");
  };
  station.station->operators().RemoveScheduleEntries({});
  EXPECT_EQ(writes, 0);
  station.station->operators().RemoveScheduleEntries({0, 2});
  EXPECT_EQ(writes, 1);
  station.Restart();
  EXPECT_EQ(Entries(station.setup().lstSchedule), Lines{"no time /c /d"});
}

}  // namespace
}  // namespace ostrel
