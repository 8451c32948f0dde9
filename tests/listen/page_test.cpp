#include "listen/page.h"

#include <gtest/gtest.h>

#include "listen/html.h"
#include "tests/bulletin/reading.h"

namespace ostrel {
namespace {

using std::chrono::minutes;
using std::chrono::seconds;

bool Has(const std::string& html, std::string_view text) {
  return html.find(text) != html.npos;
}

TEST(ListenersPage, SaysHowOldItIs) {
  const auto start = Hearing::Time{};
  Hearing hearing(start);
  EXPECT_TRUE(Has(HearingHtml(hearing.At(start + seconds(30))),
                  R"(<p class="largest">Nothing heard yet</p><p>Listening for 30 s.)"));
  for (int i = 0; i < 8; ++i) hearing.Heard(start + minutes(1));
  const auto told = [&](auto after) { return HearingHtml(hearing.At(start + minutes(1) + after)); };
  EXPECT_TRUE(Has(told(seconds(14)), "Last heard 14 s ago. Nothing was lost"));
  hearing.Lost(2, start + minutes(1));
  EXPECT_TRUE(Has(told(seconds(179)), "2 of 10 blocks were lost in the last hour."));
  EXPECT_FALSE(Has(told(seconds(179)), "largest"));
  EXPECT_TRUE(Has(told(minutes(12)), R"(<p class="largest">Nothing heard for 12 min)"));
  EXPECT_TRUE(Has(told(minutes(61)), "Nothing was lost in the last hour."));
}

ShownEvent Tornado() {
  ShownEvent event;
  event.identity = "KDMX.TO.W.0043";
  event.title = "Tornado Warning";
  event.significance = 'W';
  event.areas = "Marshall, Story IA";
  event.headline = "TAKE <b>COVER";
  event.until = At(2026, 11, 27, 14, 30);
  event.product = "TOR'\"<&.TXT";
  return event;
}

TEST(ListenersPage, SaysThatNothingIsInForceOnlyWhileItHears) {
  ListenersView view;
  EXPECT_TRUE(Has(ContentHtml(view, false), "Where home is was not told"));
  view.isHomeKnown = true;
  EXPECT_TRUE(Has(ContentHtml(view, false), "Nothing is in force at home, as far as was heard."));
  EXPECT_FALSE(Has(ContentHtml(view, true), "Nothing is in force at home"));
  view.home.push_back({Tornado(), "text"});
  EXPECT_TRUE(Has(ContentHtml(view, true), R"(<h3>Tornado Warning</h3><p class="times">until )"
                                           R"(<time datetime="2026-11-27T14:30:00Z">)"));
}

TEST(ListenersPage, LetsNothingThatWasReceivedBeMarkup) {
  ListenersView view;
  view.isHomeKnown = true;
  view.home.push_back(
      {Tornado(), "\x01\r\r\n</pre><script>alert(1)</script>\r\r\n\x1b[31m\xe9\t&"});
  view.region.push_back(Tornado());
  KeptProduct text, picture;
  text.name = picture.name = "\"><script>.TXT";
  text.kind = "<I>";
  picture.picture = "image/png";
  view.latest = {text, picture};
  const auto html = ContentHtml(view, false) + ProductHtml(text.name, view.home.front().text);
  EXPECT_FALSE(Has(html, "<script"));
  EXPECT_FALSE(Has(html, "<b>"));
  EXPECT_FALSE(Has(html, "<I>"));
  EXPECT_TRUE(
      Has(html, "&lt;/pre&gt;&lt;script&gt;alert(1)&lt;/script&gt;\n\\x1B[31m\\xE9    &amp;"));
  EXPECT_TRUE(Has(html, R"(href="product/TOR%27%22%3C%26%2ETXT")"));
  EXPECT_TRUE(Has(html, R"(src="picture/%22%3E%3Cscript%3E%2ETXT" alt="&quot;&gt;&lt;script)"));
}

}  // namespace
}  // namespace ostrel
