// Scheduled transmissions on the air and in the log.
#include <gtest/gtest.h>

#include "base/text.h"
#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

using Lines = std::vector<std::string>;

TEST(ScheduledTransmission, GoesOutAtSecondZeroOfItsMinuteAndFailuresOnlyCostTheirLines) {
  VirtualStation station(kNoon - 10s);
  station.Set("ComBaud", "38400");
  const auto folder = ToLower(station.Path(""));  // entries are kept in lower case
  station.WriteFile(station.Path("Bulletin.txt"), SampleText(2000));
  station.WriteFile(station.Path("RtSched.txt"),
                    "12:02 " + folder + "bulletin.txt " + folder + "kvdata/rtpri3/SCHED.TXT\r\n" +
                        "12:02 " + folder + "missing.txt " + folder + "kvdata/rtpri3/b c.txt\r\n" +
                        "12:02 " + folder + "bulletin.txt " + folder + "kvdata/rtpri3/b c.txt\r\n" +
                        "12:02 /only\r\n" + "noon! /a /b\r\n");
  station.Start();
  std::vector<milliseconds> copies;
  station.files.copyFault = [&](const std::string& source, const std::string&) {
    if (source.ends_with("/Bulletin.txt")) copies.push_back(station.machine.clock.Monotonic());
    return 0;
  };
  station.Run(3min);

  ASSERT_EQ(copies.size(), 2U);
  for (const auto at : copies) {
    EXPECT_GE(at, 130s);
    EXPECT_LE(at, 130s + kCyclePeriod);
  }
  Lines received;
  for (const auto& product : station.Products()) {
    if (product.name == "FILLFILE.TXT") continue;
    received.push_back(product.name);
    EXPECT_EQ(product.data, SampleText(2000));
  }
  std::sort(received.begin(), received.end());
  EXPECT_EQ(received, (Lines{"B C.TXT", "SCHED.TXT"}));

  const auto error = [](const std::string& stamp, const std::string& description,
                        const std::string& files) {
    return "11/18/26 " + stamp + " checkSched   Error # " + description + " - " + files;
  };
  const auto copyFailed = [](int code, const std::string& text) {
    return std::to_string(-2147220504 + code) + ", Copy File Failed: dll error - " +
           std::to_string(code) + " " + text + ", occurred at reference (unspecified), in CopyFile";
  };
  const auto badLine = [&](const std::string& stamp) {
    return error(stamp, "13, Type mismatch, occurred at reference (unspecified), in Ostrel",
                 "Source File: /a, Destination File: /b");
  };
  const auto failures = station.LogOf("checkSched");
  ASSERT_EQ(failures.size(), 5U);
  EXPECT_EQ(failures[0], badLine("12:00:00"));
  EXPECT_EQ(failures[1], badLine("12:01:00"));
  EXPECT_EQ(failures[2],
            error("12:02:00", copyFailed(2, "The system cannot find the file specified."),
                  "Source File: " + folder + "missing.txt, Destination File: " + folder +
                      "kvdata/rtpri3/b c.txt"));
  EXPECT_NE(failures[3].find("Source File: , Destination File: /only"), std::string::npos);
  EXPECT_EQ(failures[4], badLine("12:02:00"));
  const std::string sent = "11/18/26 12:02:00 Schedule     Sent ";
  EXPECT_EQ(station.LogOf("Schedule"),
            (Lines{sent + folder + "bulletin.txt", sent + folder + "missing.txt",
                   sent + folder + "bulletin.txt", sent}));
}

}  // namespace
}  // namespace ostrel
