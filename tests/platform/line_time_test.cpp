#include "platform/line_time.h"

#include <gtest/gtest.h>

#include "tests/support/failure_of.h"

namespace ostrel {
namespace {

TEST(LineTime, CountsEveryBitOfAByteOnTheWire) {
  const std::pair<const char*, seconds> rows[] = {{"1200,N,8,2", seconds(22)},
                                                  {" 9600 , e , 7 , 1 ", seconds(20)},
                                                  {"38400,M,5,1.5", seconds(17)}};
  for (const auto& [text, halfBits] : rows) {
    const auto settings = ParseLineSettings(text);
    // In one second the line sends as many bits as its rate says.
    EXPECT_EQ(TimeOnLine(settings, 2 * static_cast<std::size_t>(settings.rate)), halfBits) << text;
  }
  for (const char* none : {"", "1200,N,8", "1200,N,8,2,1", "1201,N,8,2", "1200,X,8,2", "1200,N,9,2",
                           "1200,N,8,3", "12e2,N,8,2"}) {
    EXPECT_EQ(FailureOf([&] { ParseLineSettings(none); }), 5) << none;
  }
}

}  // namespace
}  // namespace ostrel
