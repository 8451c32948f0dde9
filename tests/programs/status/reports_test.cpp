// What the page and the metrics make of a station's answer.
#include "programs/status/reports.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <nlohmann/json.hpp>

#include "programs/status/asked_host.h"

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

TEST(AskedHost, IsAnAddressOrANameThatWasTold) {
  for (const auto* host : {"", "127.0.0.1", "127.0.0.1:8080", "[::1]:8080", "[::1]", "LocalHost:80",
                           "shed.lan", "SHED.lan:8080"})
    EXPECT_TRUE(IsMeant(host, {"Shed.lan"})) << host;
  for (const auto* host : {"evil.example", "127.0.0.1.evil.example", "localhost.evil.example:8080",
                           "shed.lan.evil.example", "[::1].evil.example", "1.2.3", "[", "a:b:c"})
    EXPECT_FALSE(IsMeant(host, {"shed.lan"})) << host;
}

}  // namespace
}  // namespace ostrel
