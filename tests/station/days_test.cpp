// Days of the station, told in tests/days: a command stands at the left edge, and indented below it
// what the station did until the next one, by the clock on its wall. With OSTREL_TELL_DAYS=1 the
// texts are written anew from what happens; read the difference before you believe it.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

#include "base/text.h"
#include "tests/support/day.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

const fs::path kDays = fs::path(OSTREL_SOURCE_DIR) / "tests/days";

class Days : public testing::TestWithParam<std::string> {};

TEST_P(Days, GoAsTold) {
  const auto path = (kDays / GetParam()).string();
  const auto told = VirtualStation::ReadFile(path);
  std::string lived;
  std::optional<Day> day;
  ForEachLine(told, [&](std::string_view line) {
    if (line.starts_with("  ")) return;
    if (!day) day.emplace(Words(std::string(line)));
    lived += day->Live(std::string(line));
  });
  if (std::getenv("OSTREL_TELL_DAYS") != nullptr) std::ofstream(path) << lived;
  EXPECT_EQ(told, lived);
}

std::vector<std::string> AllDays() {
  std::vector<std::string> days;
  for (const auto& file : fs::directory_iterator(kDays)) days.push_back(file.path().filename());
  return days;
}

INSTANTIATE_TEST_SUITE_P(, Days, testing::ValuesIn(AllDays()),
                         [](const auto& day) { return day.param.substr(0, day.param.find('.')); });

}  // namespace
}  // namespace ostrel
