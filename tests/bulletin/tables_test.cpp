#include "bulletin/tables.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <set>
#include <sstream>

#include "base/failure.h"
#include "base/text.h"
#include "bulletin/areas.h"
#include "bulletin/codes.h"

namespace ostrel {
namespace {

TEST(BulletinCodes, EachStandOnceInTheirTable) {
  std::set<std::string> seen;
  std::map<std::string, int> counts;
  ForEachLine(kCodesTable, [&](std::string_view line) {
    if (line.starts_with('#')) return;
    const auto second = line.find('\t', line.find('\t') + 1);
    ASSERT_LT(second + 1, line.size()) << line;
    EXPECT_TRUE(seen.emplace(line.substr(0, second)).second) << line;
    ++counts[std::string(line.substr(0, line.find('\t')))];
  });
  // The service's directives name as many.
  EXPECT_EQ(counts["action"], 10);
  EXPECT_EQ(counts["significance"], 7);
  EXPECT_GE(counts["phenomenon"], 60);
  EXPECT_GE(counts["kind"], 250);
  EXPECT_EQ(MeaningOf(CodeTable::kPhenomenon, "XH"), "Extreme Heat");
  EXPECT_EQ(MeaningOf(CodeTable::kKind, "QQQ"), std::nullopt);
  EXPECT_EQ(TimeZoneOffset("chst"), std::chrono::hours(10));
  EXPECT_EQ(TimeZoneOffset("CDT"), std::chrono::hours(-5));
  EXPECT_EQ(AreaOfSame("519153"), "IAC153");
  EXPECT_EQ(AreaOfSame("075610"), "AMZ610");
  EXPECT_EQ(AreaOfSame("09915"), std::nullopt);
  EXPECT_EQ(HemispheresOf("PGUM"), (Hemispheres{1, 1}));
  EXPECT_EQ(HemispheresOf("PKZ011"), (Hemispheres{1, -1}));
  EXPECT_EQ(HemispheresOf("EGRR"), std::nullopt);
}

TEST(Areas, HaveNamesCentresAndCounties) {
  const auto& areas = Areas::Built();
  const auto* const zone = areas.Find("CAZ548");
  ASSERT_NE(zone, nullptr);
  EXPECT_EQ(zone->counties, std::vector<std::string>{"CAC037"});
  for (const auto& county : areas.Find("WYZ001")->counties)
    EXPECT_NE(areas.Find(county), nullptr) << county;
  const auto& polk = *areas.Find("IAC153");
  EXPECT_EQ(polk.name, "Polk");
  EXPECT_NEAR(polk.centre.value().latitude, 41.69, 0.05);
  EXPECT_NEAR(polk.centre.value().longitude, -93.57, 0.05);
  EXPECT_NEAR(areas.Find("GUC010")->centre.value().longitude, 144.77, 0.1);
  EXPECT_NEAR(areas.Find("AKC016")->centre.value().longitude, -173, 2)
      << "it lies on both sides of 180 degrees";
  EXPECT_EQ(areas.Find("AMZ630"), nullptr);
}

TEST(Areas, OfATableBesideTheStationComeFirst) {
  const auto areas = Areas::With(
      "# mine\n\nIAC153\tPolk County\t41.7\t-93.5\nAMZ630\tBiscayne "
      "Bay\t\t\r\nIAZ999\tNew\t1\t2\tIAC153 IAC155\n");
  EXPECT_EQ(areas.Find("IAC153")->name, "Polk County");
  EXPECT_FALSE(areas.Find("AMZ630")->centre);
  EXPECT_EQ(areas.Find("IAZ999")->counties.size(), 2U);
  EXPECT_EQ(areas.Find("IAC155")->name, "Pottawattamie");
  for (const std::string wrong :
       {"IAC15\tPolk", "IAC153", "IAC153\tPolk\t41.7", "IAC153\tPolk\t91\t0", "IAC153\tPolk\tx\t0",
        "IAC153\tPolk\t\t\tPolk"}) {
    try {
      Areas::With("#\n" + wrong);
      ADD_FAILURE() << wrong;
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.text(), "Line 2 is no area.") << wrong;
    }
  }
}

}  // namespace
}  // namespace ostrel
