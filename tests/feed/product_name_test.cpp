#include "feed/product_name.h"

#include <gtest/gtest.h>

namespace ostrel {
namespace {

using std::string_literals::operator""s;

/// "TORDMXIA.TXT 1", or nothing for an unknown name.
std::string Told(const NameRules& rules, const std::string& given) {
  const auto known = rules.NameOf(given);
  return known ? known->name + (known->urgency > 0 ? " " + std::to_string(known->urgency) : "")
               : "";
}

TEST(ProductName, IsShortOrStandsBehindTheLastHyphenOfALongOne) {
  const std::string head = "A_WFUS53KDMX161430_C_KWIN_20260516143012_";
  const std::pair<std::string, std::string> cases[] = {
      {"TORDMXIA.TXT", "TORDMXIA.TXT"},
      {"radallus.zis", "RADALLUS.ZIS"},
      {"A-B_C.X", "A-B_C.X"},
      {head + "123456-1-TORDMXIA.TXT", "TORDMXIA.TXT 1"},
      {head + "1-4-RADALLUS.GIF", "RADALLUS.GIF 4"},
      {head + "123456-TORDMXIA.TXT", "TORDMXIA.TXT"},
      {"z_eipq10kwbc161430rra_c_kwin_20260516143012_7-3-gms008ja.gif", "GMS008JA.GIF 3"},
      {"TORDMXIA.TXT.1", "TORDMXIA.TXT"},
      {head + "123456-1-TORDMXIA.TXT.12", "TORDMXIA.TXT 1"},
      {"TORDMXIA.TXT.01", ""},
      {"TORDMXIA.TXT.1.2.3", "TORDMXIA.TXT"},
      {"TORNADO-DMXIA.1", ""},
      {head + "123456-5-TORDMXIA.TXT", ""},
      {head + "123456-1-TORDMXIAX.TXT", ""},
      {head + "123456-1-TORDMXIA.TXT.part", ""},
      {head + "123456-1-TORDMXIA", ""},
      {head + "123456-1-", ""},
      {head + "-1-TORDMXIA.TXT", ""},
      {"A_WFUS53KDMX161430_X_KWIN_20260516143012_123456-1-TORDMXIA.TXT", ""},
      {"A_WFUS53KDMX16143_C_KWIN_20260516143012_123456-1-TORDMXIA.TXT", ""},
      {"A_WFUS53KDMX161430CC_C_KWIN_20260516143012_123456-1-TORDMXIA.TXT", ""},
      {"A_WFUS53KDMX161430_C_KWIN_2026051614301_123456-1-TORDMXIA.TXT", ""},
      {"AB_WFUS53KDMX161430_C_KWIN_20260516143012_123456-1-TORDMXIA.TXT", ""},
      {"A_WFUS53KDMX", ""},
      {"TORDMXIA", ""},
      {"TORDMXIA.TEXT", ""},
      {".TXT", ""},
      {"", ""},
  };
  const NameRules none({});
  for (const auto& [given, told] : cases) EXPECT_EQ(Told(none, given), told) << given;
}

TEST(ProductName, IsMadeShortByTheFirstRuleThatDoes) {
  const NameRules rules({{"nws-([a-z]{8})-[0-9]+\\.txt", "$1.TXT"},
                         {"nws-(.*)", "$1.LONGER"},
                         {"(.*)\\.html", "PAGE.HTM"}});
  EXPECT_EQ(Told(rules, "NWS-tordmxia-12.txt"), "TORDMXIA.TXT");
  EXPECT_EQ(Told(rules, "nws-x"), "") << "what the rule makes is no short name";
  EXPECT_EQ(Told(rules, "x/nws-tordmxia-12.txt"), "") << "a pattern is the whole name's";
  EXPECT_EQ(Told(rules, "nws.html"), "PAGE.HTM");
  EXPECT_EQ(Told(rules, "nws.html.1"), "PAGE.HTM") << "two of one name have got numbers";
  EXPECT_EQ(Told(rules, std::string(4096, 'a') + ".html"), "");
  const std::vector<NameRule> wrong{{"(", "X.TXT"}};
  EXPECT_THROW(NameRules{wrong}, std::runtime_error);
}

TEST(ProductName, OfAnUnknownOneIsHarmless) {
  const std::pair<std::string, std::string> cases[] = {{"plain name.x", "plain name.x"},
                                                       {"../../etc/passwd", "passwd"},
                                                       {"..", "unnamed"},
                                                       {"a/", "unnamed"},
                                                       {"...hidden", "hidden"},
                                                       {"a\n\x7f\\\0b"s, "a____b"},
                                                       {"", "unnamed"}};
  for (const auto& [given, harmless] : cases) EXPECT_EQ(HarmlessName(given), harmless) << given;
  EXPECT_LE(HarmlessName(std::string(4096, 'a')).size(), 200U);
}

}  // namespace
}  // namespace ostrel
