// Which products a feed passes over, by the areas that they are for.
#include "feed/area_rules.h"

#include <fstream>
#include <gtest/gtest.h>

#include "feed/feed_config.h"
#include "platform/linux/temporary_folder.h"

namespace ostrel {
namespace {

const UtcTime kNow{std::chrono::sys_days{std::chrono::year(2018) / 7 / 19} +
                   std::chrono::hours(21)};

std::string Warning(const std::string& areas, const std::string& more = "") {
  return "WFUS53 KDMX 192054\nTORDMX\n" + areas +
         "\n/O.NEW.KDMX.TO.W.0043.180719T2054Z-180719T2145Z/\n\nTEXT\n" + more + "$$\n";
}

/// The rules as Feed.toml has them. The file's text, and what it says when it is refused.
std::vector<AreaRule> Rules(const std::string& toml) {
  const TemporaryFolder folder;
  std::ofstream(folder / "Feed.toml") << toml;
  return ReadFeedConfig(folder / "Feed.toml", folder.path()).areas;
}

std::string RefusalOf(const std::string& keys) {
  try {
    Rules("[[area]]\n" + keys + "\n");
    return "taken";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

TEST(AreaRules, ByTheFirstThatFitsAndNeverOnWhatIsNotCertain) {
  const std::string rest = "[[area]]\naction = \"pass over\"\n";
  const std::string counties =
      "[[area]]\ncodes = [\"IAC169\", \"ILC*\"]\naction = \"take\"\n" + rest;
  const std::string ames =
      "[[area]]\nwithin = { lat = 42.03, lon = -93.62, km = 30 }\naction = \"take\"\n" + rest;
  const std::string quiet =
      "[[area]]\nkinds = [\"tor\"]\noffices = [\"KDMX\"]\ncodes = [\"IA*\"]\naction = \"pass "
      "over\"\n";
  const std::string around = "LAT...LON 4300 9500 4300 9200 4100 9200 4100 9500\n";
  const struct {
    std::string rules, product;
    std::string passedOverBy;
  } cases[] = {
      {"", Warning("IAC001-192145-"), ""},
      {counties, Warning("IAC127-169-192145-"), ""},
      {counties, Warning("IAC127-192145-"), "the rest"},
      {counties, Warning("ILC001-192145-"), ""},
      {counties, Warning("IAZ048-192145-"), ""},  // Story is the zone's county
      {counties, Warning("IAZ001-192145-"), "the rest"},
      {counties, Warning("IAC000-192145-"), ""},  // all of the state
      {counties, Warning("NEC000-192145-"), "the rest"},
      {counties, Warning("IAC1X7-192145-"), ""},  // damaged
      {counties, "WFUS53 KDMX 192054\nTORDMX\nTEXT\n", ""},
      {counties, "no bulletin at all", ""},
      {ames, Warning("IAC169-192145-"), ""},
      {ames, Warning("IAC127-192145-"), "the rest"},
      {ames, Warning("IAC127-192145-", around), ""},      // the warned area holds the place
      {counties, Warning("IAZ999-192145-"), ""},          // nobody knows its counties
      {counties, Warning("LMZ777-192145-"), "the rest"},  // a lake has none
      {ames, Warning("IAC127-192145-", "LAT...LON 4208 9500 4280 9500 4280 9250 4208 9250\n"), ""},
      {ames, Warning("IAC127-192145-", "LAT...LON 4240 9500 4280 9500 4280 9250 4240 9250\n"),
       "the rest"},
      {ames, Warning("IAC999-192145-"), ""},  // nobody knows where that is
      {quiet, Warning("IAC169-192145-"), "TOR, of KDMX, for IA*"},
      {quiet, Warning("ILC169-192145-"), ""},
  };
  for (const auto& row : cases) {
    const AreaRules rules(Rules(row.rules), Areas::Built());
    const auto* const rule = rules.PassedOverBy(row.product, kNow);
    EXPECT_EQ(rule ? Spell(*rule) : "", row.passedOverBy) << row.rules << row.product;
  }
}

TEST(AreaRules, AreRefusedWithTheLineAndTheWordThatIsWrong) {
  const std::pair<std::string, std::string> cases[] = {
      {"codes = [\"IAC169\"]", "\"action\" is missing"},
      {"action = \"leave\"", "\"action\" is \"take\" or \"pass over\""},
      {"action = \"take\"\ncodes = [\"IA-C\"]", "\"IA-C\" is none of the codes"},
      {"action = \"take\"\nkinds = [\"TORN\"]", "\"TORN\" is none of the kinds"},
      {"action = \"take\"\nwithin = { lat = 91, lon = 0, km = 5 }", "\"lat\" is a number"},
      {"action = \"take\"\nwithin = { lat = nan, lon = 0, km = 5 }", "\"lat\" is a number"},
      {"action = \"take\"\nwithin = { lat = 1, lon = 0 }", "\"km\" is a number"},
      {"action = \"take\"\nwithin = 5", "\"within\" is {"},
      {"action = \"take\"\narea = 1", "\"area\""},
  };
  for (const auto& [keys, why] : cases)
    EXPECT_NE(RefusalOf(keys).find(why), std::string::npos) << keys << "\n" << RefusalOf(keys);
}

}  // namespace
}  // namespace ostrel
