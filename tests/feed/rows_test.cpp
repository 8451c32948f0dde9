// Names, area rules and refused configurations of the feed: rows.txt holds the rows.
#include "tests/support/rows.h"

#include <fstream>
#include <gtest/gtest.h>

#include "feed/area_rules.h"
#include "feed/feed_config.h"
#include "feed/product_name.h"
#include "platform/linux/temporary_folder.h"

namespace ostrel {
namespace {

/// "TORDMXIA.TXT 1": the name and its urgency, if it has one.
std::string ShortName(const NameRules& rules, const std::string& given) {
  const auto known = rules.NameOf(given);
  if (!known) return "unknown";
  return known->name + (known->urgency > 0 ? " " + std::to_string(known->urgency) : "");
}

FeedConfig Read(const std::string& toml, const TemporaryFolder& folder = TemporaryFolder()) {
  std::ofstream(folder / "Feed.toml") << toml;
  return ReadFeedConfig(folder / "Feed.toml", "/station");
}

std::string RefusalOf(const std::string& toml) {
  const TemporaryFolder folder;
  try {
    Read(toml, folder);
    return "taken";
  } catch (const std::runtime_error& error) {
    return std::string(error.what()).substr(folder.path().size() + sizeof "/Feed.toml:");
  }
}

const std::map<std::string, std::string> kAreaRules{
    {"none", ""},
    {"counties", R"([[area]]
codes = ["IAC169", "ILC*"]
action = "take"
[[area]]
action = "pass over")"},
    {"ames", R"([[area]]
within = { lat = 42.03, lon = -93.62, km = 30 }
action = "take"
[[area]]
action = "pass over")"},
    {"quiet", R"([[area]]
kinds = ["tor"]
offices = ["KDMX"]
codes = ["IA*"]
action = "pass over")"},
};

std::string PassedOver(const std::string& rules, const std::string& product) {
  const AreaRules area(Read(kAreaRules.at(rules)).areas, Areas::Built());
  const auto* const rule =
      area.PassedOverBy(product, UtcTime{std::chrono::sys_days{std::chrono::year(2018) / 7 / 19}} +
                                     std::chrono::hours(21));
  return rule ? Spell(*rule) : "taken";
}

/// `row` is "counties: IAC127-192145- + LAT...LON 4208 9500 4280 9500 4280 9250": the rules, the
/// areas of a warning and more of its text.
std::string PassedOverRow(const std::string& row) {
  const auto colon = row.find(": "), plus = row.find(" + ");
  return PassedOver(row.substr(0, colon),
                    "WFUS53 KDMX 192054\nTORDMX\n" + row.substr(colon + 2, plus - colon - 2) +
                        "\n/O.NEW.KDMX.TO.W.0043.180719T2054Z-180719T2145Z/\n\nTEXT\n" +
                        (plus == std::string::npos ? "" : row.substr(plus + 3)) + "$$\n");
}

TEST(Feed, ReadsNamesRulesAndConfigurationsAsItsRowsSay) {
  const NameRules none({}), rules({{"nws-([a-z]{8})-[0-9]+\\.txt", "$1.TXT"},
                                   {"nws-(.*)", "$1.LONGER"},
                                   {"(.*)\\.html", "PAGE.HTM"}});
  ExpectRows("feed/rows.txt",
             {{"short name", [&](auto& given) { return ShortName(none, given); }},
              {"short name by rules", [&](auto& given) { return ShortName(rules, given); }},
              {"harmless name", HarmlessName},
              {"area rules", PassedOverRow},
              {"refused configuration", RefusalOf}});
  EXPECT_EQ(RefusalOf("x = ").find("line 1: "), 0U);
  EXPECT_EQ(ShortName(rules, std::string(4096, 'a') + ".html"), "unknown");
  EXPECT_LE(HarmlessName(std::string(4096, 'a')).size(), 200U);
  for (const auto* text : {"WFUS53 KDMX 192054\nTORDMX\nTEXT\n", "no bulletin at all"})
    EXPECT_EQ(PassedOver("counties", text), "taken") << text;
}

TEST(Feed, SaysWhatItsConfigurationMeans) {
  const auto content = [](const std::string& name) {
    std::ifstream file(OSTREL_SOURCE_DIR "/tests/feed/" + name);
    return std::string(std::istreambuf_iterator<char>(file), {});
  };
  const auto config = Read(content("all-kinds.toml"));
  EXPECT_EQ(Explain(config), content("all-kinds.explained"));
  EXPECT_EQ(config.publish->password, "secret");
  const auto usual = Read("[[folder]]\npaths = ['x']");
  EXPECT_FALSE(usual.deliverTo) << "the station's own ingest folder";
  EXPECT_EQ(usual.unknownFolder, "/station/KvData/Feed/unknown");
  EXPECT_EQ(usual.repeats, std::chrono::minutes(10));
  EXPECT_EQ(usual.quiet, std::chrono::minutes(20));
  EXPECT_EQ(usual.largest, 10'000'000U);
  EXPECT_EQ(Read("largest = 102398976").largest, 99'999U * 1024);
}

}  // namespace
}  // namespace ostrel
