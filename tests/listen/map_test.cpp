#include "listen/map.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <stdexcept>

#include "listen/county_outlines.h"

namespace ostrel {
namespace {

TEST(CountyOutlines, AreClosedAndSmall) {
  const auto& outlines = CountyOutlines::Built();
  const auto counties = outlines.Counties();
  EXPECT_GT(counties.size(), 3200u);
  for (const auto& county : counties) {
    for (const auto& part : outlines.PartsOf(county))
      EXPECT_EQ(part.front(), part.back()) << county;
  }
  EXPECT_LE(std::filesystem::file_size(OSTREL_SOURCE_DIR "/listen/outlines.tsv"), 400'000u);
  for (const auto* broken : {"c 1 2 3", "c 1 x", "c 1 2\nIAC001 1", "c 1 2\nIAC001 ,", "IAC001 -1"})
    EXPECT_THROW(CountyOutlines{broken}, std::runtime_error) << broken;
}

ShownEvent Event(char significance, std::vector<std::string> codes, std::vector<Polygon> polygons) {
  ShownEvent event;
  event.significance = significance;
  event.codes = std::move(codes);
  event.polygons = std::move(polygons);
  return event;
}

/// How many pieces the paths of that class have.
long Pieces(const std::string& svg, const std::string& name) {
  const auto at = svg.find("<path class=\"" + name + "\" d=\"");
  if (at == svg.npos) return -1;
  const auto path = svg.substr(at, svg.find("/>", at) - at);
  return std::ranges::count(path, 'M');
}

TEST(Map, ShowsWhatIsInForceNearHome) {
  const Position ames{42.03, -93.62};
  const Polygon near{{41.92, -93.76}, {42.24, -93.76}, {42.29, -92.79}};
  const Polygon far{{25.0, -80.0}, {25.5, -80.0}, {25.5, -80.5}};
  const struct {
    const char* what;
    std::optional<Position> home;
    ShownEvent event;
    const char* drawn;  // its class
    long pieces;
  } rows[] = {
      {"an outline", ames, Event('W', {"IAC169"}, {near}), "area exact warning", 1},
      {"an outline far away", ames, Event('W', {}, {far}), "area exact warning", 0},
      {"a county", ames, Event('A', {"IAC169"}, {}), "area watch", 1},
      {"a zone with its county", ames, Event('Y', {"IAZ048"}, {}), "area advisory", 1},
      {"a county that no table knows", ames, Event('W', {"IAC998"}, {}), "area warning", 0},
      {"without a home", {}, Event('W', {}, {far}), "area exact warning", 1},
      {"around the pole", Position{89.9, 0}, Event('W', {}, {near}), "area exact warning", 0},
  };
  for (const auto& row : rows)
    EXPECT_EQ(Pieces(MapSvg(row.home, {&row.event}), row.drawn), row.pieces) << row.what;
  const auto nowhere = Event('W', {"XXC001"}, {});
  EXPECT_EQ(MapSvg({}, {&nowhere}), "");
  const auto severe = Event('W', {"IAC169"}, {}), mild = Event('Y', {"IAC169", "IAC015"}, {});
  const auto both = MapSvg(ames, {&severe, &mild});
  EXPECT_EQ(Pieces(both, "area warning"), 1);
  EXPECT_EQ(Pieces(both, "area advisory"), 1) << "a county is drawn as what is most severe in it";
}

}  // namespace
}  // namespace ostrel
