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
  station.WriteFile(station.Path("Original.txt"), SampleText(2000));
  std::filesystem::create_symlink("Original.txt", station.Path("Bulletin.txt"));
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

TEST(ScheduledTransmission, ALargeFileWaitsForItsCopyAndHoldsUpNobody) {
  VirtualStation station(kNoon - 10s);
  station.Set("ComBaud", "38400");
  station.Rule(0, "TOR*");
  const auto folder = ToLower(station.Path(""));
  station.WriteFile(station.Path("large.txt"), SampleText(5000));
  station.WriteFile(station.Path("RtSched.txt"),
                    "12:00 " + folder + "large.txt " + folder + "kvdata/rtpri3/large.txt\r\n");
  const auto made = station.machine.clock.Monotonic() + 30s;
  station.files.isReady = [&](const std::string& source, Means means) {
    const bool isCopied = means == Means::kCopy && source.ends_with("large.txt");
    return !isCopied || station.machine.clock.Monotonic() >= made;
  };
  station.Start();
  station.Drop("TOR.TXT", SampleText(500));
  station.Run(3min);
  Lines names;
  for (const auto& product : station.Products()) names.push_back(product.name);
  EXPECT_EQ(names, (Lines{"TOR.TXT", "LARGE.TXT"}));
  EXPECT_EQ(station.LogOf("Schedule").size(), 1U);
}

}  // namespace
}  // namespace ostrel
