// What the page and the metrics make of a station's answer.
#include "programs/status/reports.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <nlohmann/json.hpp>

namespace ostrel {
namespace {

std::string Content(const std::string& name) {
  std::ifstream file(OSTREL_SOURCE_DIR "/tests/programs/status/" + name);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(StatusReports, AreWhatPeopleAndMetricsReadOfAnAnswer) {
  const auto status = Status::parse(Content("status.json"));
  EXPECT_EQ(PageOf(status), Content("status.txt"));
  EXPECT_EQ(MetricsOf(status), Content("status.metrics"));
  const auto none = MetricsOf(nullptr);
  EXPECT_EQ(none.find("ostrel_keyed"), std::string::npos);
  EXPECT_NE(none.find("ostrel_up 0\n"), std::string::npos);
}

}  // namespace
}  // namespace ostrel
