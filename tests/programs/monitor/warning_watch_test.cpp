#include "programs/monitor/warning_watch.h"

#include <fstream>
#include <gtest/gtest.h>

#include "platform/linux/temporary_folder.h"

namespace ostrel {
namespace {

ShownEvent Named(const std::string& identity) {
  ShownEvent event;
  event.identity = event.title = identity;
  return event;
}

TEST(WarningWatch, TellsEachEventOnceAndItsEndOnceAlsoOverARestart) {
  const TemporaryFolder folder;
  const auto file = folder / ".warnings";
  std::string told;
  const auto begin = [&] {
    return WarningWatch("", file, [&](const AlarmNews& news, const auto& event) {
      told +=
          std::string(news.Event()) + " " + event["identity"].template get<std::string>() + "\n";
    });
  };
  const auto take = [&](WarningWatch& watch, const std::vector<ShownEvent>& events) {
    told.clear();
    watch.Take(events);
    return told;
  };
  auto first = begin();
  EXPECT_EQ(take(first, {Named("A"), Named("A"), Named("B")}), "begin A\nbegin B\n");
  EXPECT_EQ(take(first, {Named("B"), Named("A")}), "");
  EXPECT_EQ(take(first, {Named("B"), Named("C")}), "end A\nbegin C\n");
  auto second = begin();
  EXPECT_EQ(take(second, {Named("C"), Named("D")}), "end B\nbegin D\n");
  std::ofstream(file) << R"([{"identity":7},3)";
  auto third = begin();
  EXPECT_EQ(take(third, {Named("C")}), "begin C\n");
}

}  // namespace
}  // namespace ostrel
