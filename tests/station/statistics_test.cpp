// The figures that are written four times a day.
#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

TEST(Statistics, AreWrittenAtTheFirstTickOfTheirSecondAndClosedAtMidnight) {
  struct {
    milliseconds start;  // from noon; the first tick is 425 ms later
    bool areWritten, areReset;
  } const rows[] = {{12h - 1s, true, true},
                    {6h - 1s, true, false},
                    {1h - 1s, false, false},
                    // A tick 1 ms before the hour, then one in its first second.
                    {6h - 426ms, true, false},
                    // The first tick of all in second 0: no new second.
                    {6h - 425ms, false, false}};
  for (const auto& [start, areWritten, areReset] : rows) {
    SCOPED_TRACE(start.count());
    VirtualStation station(kNoon + start);
    station.Set("CWIDTime", "0");
    station.Start();
    auto& status = station.station->status();
    station.machine.line.Write(std::string(1100, 'x'));  // busy, so that no figure grows
    status.FillsSent = 5;
    status.FilesSent[Priority(10)] = 7;
    status.MaximumCount[Priority(2)] = 12;
    status.compression = {.compressed = 2, .uncompressed = 3, .ratio = 1.5F};
    station.Run(4s);
    Lines expected;
    if (areWritten) expected = {"Throughput = 1800 BPS", "Fills Sent: 5", "Files Sent: 7"};
    for (int p = 1; areWritten && p <= kPriorityCount; ++p)
      expected.push_back(fmt::format("Priority {:02} Maximum Count: {}", p, p == 2 ? 12 : 0));
    EXPECT_EQ(station.Messages("Stats"), expected);
    for (const auto& line : station.LogOf("Stats")) EXPECT_EQ(line.substr(11, 6), ":00:00");
    const auto& [compressed, uncompressed, ratio] = status.compression;
    EXPECT_EQ(std::tuple(status.FillsSent, status.FilesSentInAll(), compressed, uncompressed),
              areReset ? std::tuple(0, 0, 0, 0) : std::tuple(5, 7, 2, 3));
    EXPECT_EQ(status.MaximumCount[Priority(2)], areReset ? 0 : 12);
    EXPECT_EQ(ratio, 1.5F);
  }
}

}  // namespace
}  // namespace ostrel
