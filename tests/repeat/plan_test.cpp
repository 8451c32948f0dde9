// Which warnings are repeated through their lives, and what need not be sent any more.
#include "repeat/plan.h"

#include <fstream>
#include <gtest/gtest.h>

#include "platform/linux/temporary_folder.h"
#include "tests/bulletin/reading.h"

namespace ostrel {
namespace {

using namespace std::chrono_literals;

UtcTime Clock(int hour, int minute) {
  return At(2018, 7, 19, hour, minute);
}

/// A segment of a tornado warning.
std::string Tornado(const std::string& areas, const std::string& action,
                    const std::string& until = "2145", const std::string& number = "0043") {
  return areas + "-19" + until + "-\n/O." + action + ".KDMX.TO.W." + number +
         ".000000T0000Z-180719T" + until + "Z/\n\nTEXT\n\n$$\n";
}

KnownProduct Product(const std::string& name, UtcTime arrived, const std::string& segments) {
  const auto text = fmt::format("WFUS53 KDMX {:%d%H%M}\n{}DMX\n\n{}", fmt::gmtime(arrived),
                                name.substr(0, 3), segments);
  return {.name = name,
          .bytes = static_cast<std::int64_t>(text.size()),
          .arrived = arrived,
          .bulletin = ReadBulletin(text, arrived)};
}

KnownProduct Sent(KnownProduct product) {
  product.lastOut = product.arrived;
  return product;
}
KnownProduct Waiting(KnownProduct product) {
  product.waits = true;
  return product;
}

const RepeatConfig kConfig{.rules = {{{"TOR", "SVS"}, 10min}, {{"FFW"}, 30min}}};

TEST(Repetitions, FollowAWarningThroughItsLife) {
  std::vector<KnownProduct> products;
  const std::vector<KnownProduct> arrivals{
      Product("TORDMXIA.TXT", Clock(20, 54), Tornado("IAC127-169", "NEW")),
      Product("SVSDMXIA.TXT", Clock(21, 20), Tornado("IAC127-169", "EXT", "2215")),
      Product("SVSDMXIA.TXT.1", Clock(21, 42),
              Tornado("IAC127", "CAN", "2215") + Tornado("IAC169", "CON", "2215")),
      Product("SVSDMXIA.TXT.2", Clock(22, 8), Tornado("IAC169", "CAN", "2215"))};
  std::string sent;
  for (auto now = Clock(20, 50); now < Clock(22, 30); now += 1min) {
    for (const auto& arrival : arrivals)
      if (arrival.arrived == now) products.push_back(Sent(arrival));
    for (const auto& repetition : FindRepetitions(products, kConfig, now)) {
      if (!repetition.next || *repetition.next > now) continue;
      auto& product = products[repetition.product];
      product.lastOut = now;
      sent += fmt::format("{:%H:%M} {} ", fmt::gmtime(now), product.name);
    }
  }
  EXPECT_EQ(sent,
            "21:04 TORDMXIA.TXT 21:14 TORDMXIA.TXT 21:30 SVSDMXIA.TXT 21:40 SVSDMXIA.TXT "
            "21:52 SVSDMXIA.TXT.1 22:02 SVSDMXIA.TXT.1 ");
}

TEST(Repetitions, AreOfWhatIsCertainAlone) {
  const auto warning = Sent(Product("TORDMXIA.TXT", Clock(20, 54), Tornado("IAC127", "NEW")));
  auto test = warning;
  test.bulletin->segments[0].events[0].isTest = true;
  auto damaged = warning;
  damaged.bulletin->isDamaged = true;
  auto unread = Sent(Product("SVSDMXIA.ZIS", Clock(21, 0), ""));
  unread.bulletin.reset();
  auto elsewhere = unread;
  elsewhere.name = "SVSDVNIA.ZIS";
  auto earlier = unread;
  earlier.arrived = Clock(20, 0);
  auto picture = unread;
  picture.name = "RADDMXIA.GIF";
  const auto flood = Sent(Product("FLWDMXIA.TXT", Clock(20, 54), Tornado("IAC127", "NEW")));
  const auto mixed =
      Sent(Product("TORDMXIA.TXT", Clock(20, 54),
                   Tornado("IAC127", "NEW") + Tornado("IAC153", "NEW", "2100", "0044")));
  auto unsent = warning;
  unsent.lastOut.reset();
  const struct {
    const char* what;
    std::vector<KnownProduct> products;
    std::string told;
  } rows[] = {
      {"as it is", {warning}, "21:04"},
      {"an unreadable one of another office, an earlier one, a picture",
       {warning, elsewhere, earlier, picture},
       "21:04"},
      {"an unreadable one of its office", {warning, unread}, "A later product of its office"},
      {"damaged", {damaged}, "Part of it is over"},
      {"one of two events is over", {mixed}, "Part of it is over"},
      {"waits", {Waiting(warning)}, "It waits"},
      {"never sent", {unsent}, "It has never gone out"},
      {"no rule", {flood}, "No rule"},
      {"a test", {test}, ""},
  };
  for (const auto& row : rows) {
    std::string told;
    for (const auto& repetition : FindRepetitions(row.products, kConfig, Clock(21, 10)))
      told += repetition.next ? fmt::format("{:%H:%M}", fmt::gmtime(*repetition.next))
                              : repetition.whyNot;
    EXPECT_EQ(told.substr(0, std::max<std::size_t>(row.told.size(), told.empty() ? 0 : 1)),
              row.told)
        << row.what << ": " << told;
  }
  EXPECT_EQ(HourlyShare(kConfig, 1200), 39272);
  EXPECT_EQ(OnTheLine(1024) + OnTheLine(1025) + OnTheLine(0), 4 * 1116);
}

TEST(Repetitions, NeedNotBeSentWhenTheirEventIsOverOrToldAnew) {
  const auto first = Waiting(Product("TORDMXIA.TXT", Clock(20, 54), Tornado("IAC127-169", "NEW")));
  const auto whole = Product("SVSDMXIA.TXT", Clock(21, 10), Tornado("IAC127-169", "CON"));
  const auto half = Product("SVSDMXIA.TXT", Clock(21, 10), Tornado("IAC127", "CON"));
  const auto cancel = Product("SVSDMXIA.TXT", Clock(21, 10), Tornado("IAC127-169", "CAN"));
  auto damaged = Sent(whole);
  damaged.bulletin->isDamaged = true;
  const struct {
    const char* what;
    std::vector<KnownProduct> products;
    UtcTime now;
    std::vector<std::size_t> obsolete;
  } rows[] = {
      {"in force", {first}, Clock(21, 20), {}},
      {"expired", {first}, Clock(21, 45), {0}},
      {"told anew", {first, Waiting(whole)}, Clock(21, 20), {0}},
      {"told anew by what nobody hears", {first, whole}, Clock(21, 20), {}},
      {"told anew for some areas alone", {first, Sent(half)}, Clock(21, 20), {}},
      {"cancelled", {first, Sent(cancel)}, Clock(21, 20), {0}},
      {"cancelled, and that waits too", {first, Waiting(cancel)}, Clock(22, 0), {0}},
      {"told anew by a damaged one", {first, damaged}, Clock(21, 20), {}},
      {"sent", {Sent(whole)}, Clock(22, 20), {}},
  };
  for (const auto& row : rows)
    EXPECT_EQ(FindObsolete(row.products, row.now), row.obsolete) << row.what;
}

TEST(RepeatConfig, SaysWhatIsWrongInIt) {
  const TemporaryFolder folder;
  const auto read = [&](const std::string& text) -> std::string {
    std::ofstream(folder / "Repeat.toml") << text;
    try {
      return Explain(ReadRepeatConfig(folder / "Repeat.toml"));
    } catch (const std::runtime_error& error) {
      return error.what() + folder.path().size() + sizeof "/Repeat.toml:";
    }
  };
  EXPECT_EQ(read("share = 5\nexpired = 'delete'\n[[repeat]]\nkinds = ['tor', 'SVR']\nminutes = 10"),
            "While it is in force, TOR, SVR is sent again every 10 min.\n"
            "It goes into queue 3, and gets at most 5 % of the air.\n"
            "What waits while its event is over is deleted.\n");
  EXPECT_EQ(read("shares = 5"), "line 1: \"shares\" means nothing here.");
  EXPECT_EQ(read("share = 0"), "line 1: \"share\" is a number from 1 to 100.");
  EXPECT_EQ(read("expired = 'burn'"), "line 1: \"expired\" is \"leave\" or \"delete\".");
  EXPECT_EQ(read("[[repeat]]\nminutes = 5"), "line 1: \"kinds\" is missing.");
  EXPECT_EQ(read("[[repeat]]\nkinds = ['TOR']"), "line 1: \"minutes\" is missing.");
  EXPECT_EQ(read("[[repeat]]\nkinds = ['TORN']\nminutes = 5"),
            "line 2: \"TORN\" is no kind: three letters, as in \"TOR\", or \"*\".");
}

}  // namespace
}  // namespace ostrel
