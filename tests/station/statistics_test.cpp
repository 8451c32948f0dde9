// What happens once a second, once a minute and four times a day, and what the window shows of it.
#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

using Lines = std::vector<std::string>;
const auto kMidnight = kNoon + 12h;

/// A day's figures; the port is kept busy so that none of them grows meanwhile.
void GiveFigures(VirtualStation& station) {
  auto& engine = station.station->engine();
  station.machine.line.onWrite = [](std::string_view) {};
  station.machine.line.Write(std::string(1100, 'x'));
  engine.FillsSent = 5;
  engine.FilesSent[Priority(1)] = 3;
  engine.FilesSent[Priority(10)] = 4;
  engine.MaximumCount[Priority(2)] = 12;
  engine.compression = {.compressed = 2, .uncompressed = 3, .ratio = 1.5F};
}

TEST(Statistics, AreWrittenAtTheFirstTickOfTheirSecondAndClosedAtMidnight) {
  struct {
    milliseconds start;  // from midnight; the first tick is 425 ms later
    bool areWritten;
    bool areReset;
  } const rows[] = {
      {-1s, true, true},          {5h + 59min + 59s, true, false},
      {12h - 1s, true, false},    {18h - 1s, true, false},
      {1h - 1s, false, false},    {3h - 1s, false, false},
      {6h + 59s, false, false},   {23h - 1s, false, false},
      {6h - 426ms, true, false},   // a tick 1 ms before the hour, then one in its first second
      {6h - 425ms, false, false},  // the first tick of all in second 0: no new second
      {-2500ms, true, true},
  };
  for (const auto& row : rows) {
    VirtualStation station(kMidnight + row.start);
    station.Set("CWIDTime", "0");
    station.Start();
    GiveFigures(station);
    station.Run(4s);
    Lines expected;
    if (row.areWritten) {
      expected = {"Throughput = 1800 BPS", "Fills Sent: 5", "Files Sent: 7"};
      for (const auto p : AllPriorities())
        expected.push_back(
            fmt::format("Priority {:02} Maximum Count: {}", p.number(), p.number() == 2 ? 12 : 0));
    }
    Lines messages;
    for (const auto& line : station.LogOf("Stats")) {
      messages.push_back(line.substr(31));
      EXPECT_EQ(line.substr(11, 6), ":00:00") << line;
    }
    EXPECT_EQ(messages, expected) << row.start.count();
    const auto& engine = station.station->engine();
    const auto figures =
        fmt::format("{} {} {} {} {} {}", engine.FillsSent, engine.FilesSentInAll(),
                    engine.MaximumCount[Priority(2)], engine.compression.compressed,
                    engine.compression.uncompressed, engine.compression.ratio);
    EXPECT_EQ(figures, row.areReset ? "0 0 0 0 0 1.5" : "5 7 12 2 3 1.5") << row.start.count();
  }
}

TEST(Displays, FollowTheSecondTheRatioAndTheLine) {
  VirtualStation station(kNoon + 58s);  // ticks at 58.425 ... 59.925, 00.050, 00.175
  station.Set("CWIDTime", "0");
  station.Start();
  GiveFigures(station);
  station.station->engine().timingReadout = true;
  struct {
    int ticks;
    const char* readout;  // the last ticks' new second, second and bytes waiting
    const char* filesSent;
  } const rows[] = {{1, "58 58 1087", ""}, {1, "99 58 1073", ""}, {3, "99 58 1032", ""},
                    {1, "59 59 1019", ""}, {7, "99 59 0923", ""}, {1, "0 0 0910", "7"},
                    {1, "99 0 0896", "7"}};
  auto& window = station.window();
  auto light = Light::kNone;
  for (const auto& row : rows) {
    for (int i = 0; i < row.ticks; ++i) {
      station.Run(kCyclePeriod);
      EXPECT_EQ(window.imgActivity.Get(), light == Light::kRed ? Light::kYellow : Light::kRed);
      light = window.imgActivity.Get();
    }
    EXPECT_EQ(window.lblStatus2.Get(), row.readout);
    EXPECT_EQ(window.lblFilesSent.Get(), row.filesSent);
  }
  EXPECT_EQ(window.lblCompressionRatio.Get(), "Compression Ratio = 1.5:1");
  EXPECT_EQ(window.lblDataRate.Get(), "Transmitting 1200 BPS");
  EXPECT_EQ(window.lblThroughput.Get(), "Throughput = 1800 BPS");

  // A ratio of 0 leaves the displays; a line with nothing to send leaves the light.
  std::filesystem::remove(station.Path("FillFile.txt"));
  station.station->engine().compression.ratio = 0;
  station.Run(20s);
  light = window.imgActivity.Get();
  station.Run(kCyclePeriod);
  EXPECT_EQ(window.imgActivity.Get(), light);
  EXPECT_EQ(window.lblThroughput.Get(), "Throughput = 1800 BPS");
}

}  // namespace
}  // namespace ostrel
