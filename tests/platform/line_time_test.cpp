#include "platform/line_time.h"

#include <gtest/gtest.h>

#include "tests/support/failure_of.h"

namespace ostrel {
namespace {

using std::chrono::milliseconds;

TEST(LineTime, CountsEveryBitOfAByteOnTheWire) {
  const struct {
    const char* settings;
    int halfBits;
  } rows[] = {{"1200,N,8,2", 22}, {" 9600 , e , 7 , 1 ", 20}, {"38400,M,5,1.5", 17}};
  for (const auto& row : rows) {
    const auto settings = ParseLineSettings(row.settings);
    // In one second the line sends as many bits as its rate says.
    EXPECT_EQ(TimeOnLine(settings, 2 * static_cast<std::size_t>(settings.rate)),
              seconds(row.halfBits))
        << row.settings;
  }
}

TEST(LineTime, RefusesSettingsThatAreNone) {
  for (const char* text : {"", "1200,N,8", "1200,N,8,2,1", "1201,N,8,2", "1200,X,8,2", "1200,N,9,2",
                           "1200,N,8,3", "12e2,N,8,2"}) {
    EXPECT_EQ(FailureOf([&] { ParseLineSettings(text); }), 5) << text;
  }
}

TEST(LineTime, IsIdleNotBeforeTheLastBitHasLeft) {
  LineTime line(ParseLineSettings("1200,N,8,2"));
  line.Add(1116, seconds(100));  // 1116 × 11 bits at 1200 a second: 10.23 s
  const auto end = seconds(100) + milliseconds(10'230);
  EXPECT_EQ(line.Unsent(seconds(100)), 1116u);
  EXPECT_EQ(line.Unsent(end - nanoseconds(1)), 1u);
  EXPECT_EQ(line.Unsent(end), 0u);
  line.Add(110, end - seconds(1));  // joins the queue
  EXPECT_EQ(line.IdleAt(), end + nanoseconds(1'008'333'334));
  line.Clear();
  EXPECT_EQ(line.Unsent(end), 0u);
}

}  // namespace
}  // namespace ostrel
