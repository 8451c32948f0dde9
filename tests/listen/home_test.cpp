#include "listen/home.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace ostrel {
namespace {

TEST(Home, IsReadAsItIsToldOrRefused) {
  EXPECT_EQ(ReadPlace("42.03,-93.62"), (Position{42.03, -93.62}));
  EXPECT_EQ(ReadAreaCodes("IAC169,IAZ048"), (std::vector<std::string>{"IAC169", "IAZ048"}));
  for (const auto* place : {"", "42.03", "42.03;-93.62", "91,0", "0,181", "42.03,-93.62x", "nan,0"})
    EXPECT_THROW(ReadPlace(place), std::runtime_error) << place;
  for (const auto* codes : {"IA169", "iac169", "IAC16", "IAX169", "IAC169,Story"})
    EXPECT_THROW(ReadAreaCodes(codes), std::runtime_error) << codes;
}

TEST(Home, IsWhereOutlineOrCodesSay) {
  const Polygon around{{41.92, -93.76}, {42.24, -93.76}, {42.29, -92.79}, {41.95, -92.78}};
  const Polygon crossing{{41.0, -94.0}, {43.0, -93.0}, {41.0, -93.0}, {43.0, -94.0}};
  const Position ames{42.03, -93.62}, edge{42.03, -93.765}, west{42.03, -93.80};
  const struct {
    const char* what;
    Home home;
    std::vector<Polygon> polygons;
    std::vector<Circle> circles;
    std::vector<std::string> areas;
    bool isHome;
  } rows[] = {
      {"within", {ames, {}}, {around}, {}, {"IAC169"}, true},
      {"outside, whatever the codes say", {west, {"IAC169"}}, {around}, {}, {"IAC169"}, false},
      {"at the edge", {edge, {}}, {around}, {}, {}, true},
      {"one of two", {west, {}}, {around, crossing}, {}, {}, true},
      {"below the knot of a bow", {Position{41.2, -93.5}, {}}, {crossing}, {}, {}, false},
      {"near", {ames, {}}, {}, {{{42.03, -93.80}, 16}}, {}, true},
      {"far", {ames, {}}, {}, {{{42.03, -93.80}, 12}}, {}, false},
      {"no place", {{}, {"IAC169"}}, {around}, {}, {"IAC169"}, true},
      {"no outline", {ames, {"IAC169"}}, {}, {}, {"IAC127", "IAC169"}, true},
      {"another county", {ames, {"IAC169"}}, {}, {}, {"IAC127"}, false},
      {"a zone of the county", {{}, {"IAC169"}}, {}, {}, {"IAZ048"}, true},
      {"a county of the zone", {{}, {"IAZ048"}}, {}, {}, {"IAC169"}, true},
      {"the state", {{}, {"IAC169"}}, {}, {}, {"IAC000"}, true},
      {"another state", {{}, {"IAC169"}}, {}, {}, {"ILC000"}, false},
      {"nothing told", {}, {}, {}, {"IAC169"}, false},
  };
  for (const auto& row : rows) {
    Segment segment;
    segment.polygons = row.polygons;
    segment.circles = row.circles;
    EXPECT_EQ(IsAtHome(row.home, segment, row.areas), row.isHome) << row.what;
  }
}

}  // namespace
}  // namespace ostrel
