// The last 24 hours as the page draws and words them.
#include "programs/status/day.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <regex>

namespace ostrel {
namespace {

using namespace std::chrono_literals;

const UtcTime kNow = std::chrono::sys_days(std::chrono::year(2026) / 11 / 26) + 13h + 5min;

Status EmptyDay(std::size_t stretches) {
  Status day = {{"stretch", 300.0}, {"present", 300.0}, {"urgentTo", 3}};
  for (const auto* field : {"offAir", "urgentBytes", "otherBytes", "arrived", "sent"})
    day[field] = std::vector<int>(stretches, 0);
  return day;
}

/// The figure of `id`, its caption included.
std::string FigureIn(const std::string& html, const std::string& id) {
  const auto end = html.find("</figure>", html.find("id=\"day-" + id + "\""));
  const auto begin = html.rfind("<figure>", end);
  return html.substr(begin, end - begin);
}

std::string PathIn(const std::string& figure) {
  std::smatch found;
  std::regex_search(figure, found, std::regex("class=\"bars\" d=\"([^\"]*)\""));
  return found[1];
}

class DayOnThePage : public testing::Test {
 protected:
  void SetUp() override { setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1); }
  void TearDown() override { unsetenv("TZ"); }
};

TEST_F(DayOnThePage, DrawsEachValueAtItsTimeAndHeightAndSaysItInWords) {
  auto day = EmptyDay(288);
  day["urgentBytes"][144] = 2500;  // 02:05 to 02:10 on the wall, half way across 1440 minutes
  day["urgentBytes"][145] = 5000;
  day["otherBytes"][0] = 5'000'001;
  day["arrived"][287] = 1;
  day["arrived"][286] = 1234;
  day["offAir"][72] = 2.0;
  day["offAir"][73] = 300.0;
  const auto html = DayOf(day, kNow);

  const auto urgent = FigureIn(html, "urgentBytes");
  EXPECT_NE(PathIn(urgent).find("V48.0H720.0V24.0H725.0V0.0H730.0V48.0H"), std::string::npos)
      << PathIn(urgent);
  EXPECT_NE(urgent.find("at most 5,000, at 02:10"), std::string::npos) << urgent;
  EXPECT_NE(urgent.find("<text x=\"0\" y=\"12\">5,000</text>"), std::string::npos);
  EXPECT_NE(urgent.find("14:05 to 20:05: at most 0. 20:05 to 02:05: at most 0. "
                        "02:05 to 08:05: at most 5,000. 08:05 to 14:05: at most 0.</desc>"),
            std::string::npos);
  for (const auto* tick : {R"(x="16.32%" y="77">18:00<)", R"(x="41.32%" y="77">00:00<)",
                           R"(x="91.32%" y="77">12:00<)"})
    EXPECT_NE(urgent.find(tick), std::string::npos) << tick;
  EXPECT_NE(FigureIn(html, "otherBytes").find(">10,000,000<"), std::string::npos);
  EXPECT_NE(FigureIn(html, "arrived").find("1,235 in all, at most 1,234 in 5 minutes, at 13:55"),
            std::string::npos);
  EXPECT_NE(FigureIn(html, "sent").find("</b> none<"), std::string::npos);
  const auto offAir = FigureIn(html, "offAir");
  EXPECT_NE(PathIn(offAir).find("H360.0V45.0H365.0V0.0H370.0V48.0"), std::string::npos)
      << "seconds are seen, too: " << PathIn(offAir);
  EXPECT_NE(offAir.find("5 min 2 s in all, the last at 20:10"), std::string::npos) << offAir;
  EXPECT_NE(html.find("<p>In the 24 hours until 14:05 (UTC+01:00) 1,235 products came and 0 were "
                      "sent. The station was off the air for 5 min 2 s. At most 5,000 urgent bytes "
                      "waited (priorities 1 to 3), and 5,000,001 others.</p>"),
            std::string::npos)
      << html.substr(0, 400);
  EXPECT_EQ(html.find("class=\"gap\""), std::string::npos);
  EXPECT_EQ(html.find("style="), std::string::npos) << "a page's policy may forbid it";
}

TEST_F(DayOnThePage, ShowsAGapAsAGapAndTakesNoTextFromTheStation) {
  auto day = EmptyDay(72);
  day["present"] = 150.0;
  for (auto& [field, values] : day.items()) {
    if (values.is_array()) values[70] = values[69] = nullptr;
  }
  const auto html = DayOf(day, kNow);
  const auto sent = FigureIn(html, "sent");
  // From the start of the drawing to the first stretch, and ten minutes.
  EXPECT_NE(sent.find(R"(<rect class="gap" x="0.00%" y="16" width="75.17%" height="48"/>)"),
            std::string::npos)
      << sent;
  EXPECT_NE(sent.find(R"(<rect class="gap" x="99.13%" y="16" width="0.69%" height="48"/>)"),
            std::string::npos)
      << sent;
  EXPECT_NE(sent.find(">no figures</text>"), std::string::npos);
  EXPECT_NE(sent.find("14:05 to 20:05: no figures. "), std::string::npos);
  EXPECT_NE(
      html.find("There are figures of 5 h 47 min of the 24 hours until 14:05 (UTC+01:00); the "
                "rest is hatched."),
      std::string::npos)
      << html.substr(0, 400);
  day["urgentTo"] = "<b>";
  EXPECT_ANY_THROW(DayOf(day, kNow));
  EXPECT_ANY_THROW(DayOf({{"error", "There is no such question."}}, kNow));
}

}  // namespace
}  // namespace ostrel
