// Scheduled transmissions on the air and in the log, and their list as the operator edits it.
#include <gtest/gtest.h>

#include "base/text.h"
#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

TEST(ScheduledTransmission, GoesOutAtSecondZeroOfItsMinuteAndFailuresOnlyCostTheirLines) {
  VirtualStation station(kNoon - 10s);
  station.Set("ComBaud", "38400");
  const auto folder = ToLower(station.Path(""));  // entries are kept in lower case
  const auto source = folder + "bulletin.txt", missing = folder + "missing.txt",
             destination = folder + "kvdata/rtpri3/b c.txt";
  station.WriteFile(station.Path("Bulletin.txt"), SampleText(2000));
  station.WriteFile(station.Path("RtSched.txt"), "12:02 " + missing + " " + destination +
                                                     "\r\n12:02 " + source + " " + destination +
                                                     "\r\n12:02 /only\r\nnoon! /a /b\r\n");
  station.Start();
  station.Run(3min);

  const auto products = station.Products();
  ASSERT_EQ(products.size(), 1U);
  EXPECT_EQ(products[0].name + products[0].data, "B C.TXT" + SampleText(2000));
  const std::string sent = "11/18/26 12:02:00 Schedule     Sent ";
  EXPECT_EQ(station.LogOf("Schedule"), (Lines{sent + missing, sent + source, sent}));
  const auto failures = station.Messages("checkSched");
  ASSERT_EQ(failures.size(), 5U);
  EXPECT_EQ(failures[0],
            "Error # 13, Type mismatch, occurred at reference (unspecified), in Ostrel - Source "
            "File: /a, Destination File: /b");
  EXPECT_EQ(failures[2],
            "Error # -2147220502, Copy File Failed: dll error - 2 The system cannot find the file "
            "specified., occurred at reference (unspecified), in CopyFile - Source File: " +
                missing + ", Destination File: " + destination);
  EXPECT_NE(failures[3].find("Source File: , Destination File: /only"), std::string::npos);
}

TEST(ScheduleEntries, AreCheckedAndStoredInLowerCase) {
  VirtualStation station;
  station.Start();
  const auto enter = [&](const std::string& entry) {
    station.machine.dialogs.messages.clear();
    station.setup().txtSchedule.Set(entry);
    const auto after = station.station->actions().AddScheduleEntry();
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

TEST(ScheduleEntries, AreLoadedAsTheyStandAndRemovedTogether) {
  VirtualStation station;
  station.WriteFile(station.Path("RtSched.txt"),
                    "  01:00 /A /B  \n123456789\r\nno time /c /d\r\n02:00 /e /f\r\n\r\n");
  station.Start();
  EXPECT_EQ(Entries(station.setup().lstSchedule),
            (Lines{"01:00 /A /B", "no time /c /d", "02:00 /e /f"}));

  station.station->actions().RemoveScheduleEntries({0, 2});
  station.Restart();
  EXPECT_EQ(Entries(station.setup().lstSchedule), Lines{"no time /c /d"});
}

}  // namespace
}  // namespace ostrel
