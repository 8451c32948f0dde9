#include "listen/map.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/format.h>
#include <map>
#include <numbers>

#include "bulletin/areas.h"
#include "listen/county_outlines.h"
#include "listen/html.h"
#include "listen/page_texts.h"

namespace ostrel {
namespace {

constexpr double kWidth = 800;  // of the drawing, in its units
/// What is shown, in degrees of latitude: at least around home, and at most.
constexpr double kLeastHeight = 1.8, kMostHeight = 6;
constexpr double kMostHeightWithNames = 3.5;
constexpr double kMargin = 0.15;
constexpr double kShape = 1.5;  // width to height

/// By what an event is drawn as; what comes later lies on top.
constexpr std::array kClasses = {"advisory", "watch", "warning"};

std::size_t RankOf(const ShownEvent& event) {
  return static_cast<std::size_t>(std::ranges::find(kClasses, std::string(ClassOf(event))) -
                                  kClasses.begin());
}

struct Warned {
  std::size_t rank = 0;
  std::vector<Polygon> outlines;      // as the product has them
  std::vector<std::string> counties;  // where it has none
  Bounds bounds;
};

void Include(Bounds& bounds, const std::vector<Polygon>& outlines) {
  for (const auto& outline : outlines)
    for (const auto& corner : outline) bounds.Include(corner);
}

std::vector<std::string> CountiesOf(const std::string& code) {
  const auto* const area = Areas::Built().Find(code);
  return area == nullptr || area->counties.empty() ? std::vector{code} : area->counties;
}

Warned WarnedBy(const ShownEvent& event) {
  Warned warned;
  warned.rank = RankOf(event);
  warned.outlines = event.polygons;
  Include(warned.bounds, warned.outlines);
  if (!warned.outlines.empty()) return warned;
  for (const auto& code : event.codes) {
    for (auto& county : CountiesOf(code)) {
      Include(warned.bounds, CountyOutlines::Built().PartsOf(county));
      warned.counties.push_back(std::move(county));
    }
  }
  return warned;
}

/// Degrees to units. Narrower towards the poles, as seen from the middle.
class Projection {
 public:
  explicit Projection(const Bounds& shown)
      : shown_(shown),
        unit_(kWidth / (shown.east - shown.west)),
        stretch_(1 / Narrowing((shown.north + shown.south) / 2)) {}

  static double Narrowing(double latitude) {
    return std::max(std::cos(latitude * std::numbers::pi / 180), 0.1);
  }

  double Height() const { return (shown_.north - shown_.south) * unit_ * stretch_; }
  double X(Position place) const { return (place.longitude - shown_.west) * unit_; }
  double Y(Position place) const { return (shown_.north - place.latitude) * unit_ * stretch_; }

  std::string PathOf(const std::vector<Position>& corners, const char* end) const {
    std::string path;
    for (const auto& corner : corners)
      path += fmt::format("{}{:.0f} {:.0f}", path.empty() ? 'M' : 'L', X(corner), Y(corner));
    return path + end;
  }

 private:
  Bounds shown_;
  double unit_, stretch_;
};

/// What is warned near the middle, and some of what is around it, in the shape of the drawing.
Bounds ShownAround(Position middle, const std::vector<Warned>& warned) {
  Bounds wanted;
  wanted.Include(middle);
  for (const auto& one : warned) {
    Bounds together = wanted;
    together.Include(one.bounds);
    const double narrowing = Projection::Narrowing(middle.latitude);
    const double height = std::max(together.north - together.south,
                                   (together.east - together.west) * narrowing / kShape);
    if (height <= kMostHeight) wanted = together;
  }
  const double narrowing = Projection::Narrowing(middle.latitude);
  const double height =
      std::max({wanted.north - wanted.south + 2 * kMargin, kLeastHeight,
                ((wanted.east - wanted.west) * narrowing + 2 * kMargin) / kShape});
  const auto [latitude, longitude] = wanted.Middle();
  const double width = height * kShape / narrowing;
  return {latitude - height / 2, latitude + height / 2, longitude - width / 2,
          longitude + width / 2};
}

std::string BordersSvg(const Bounds& shown, const Projection& projection) {
  std::string counties, states;
  for (const auto& border : CountyOutlines::Built().borders()) {
    if (!border.bounds.Touches(shown)) continue;
    (border.isOfState ? states : counties) += projection.PathOf(border.corners, "");
  }
  return fmt::format(R"(<path class="county" d="{}"/><path class="state" d="{}"/>)", counties,
                     states);
}

std::string PathOf(const std::vector<Polygon>& outlines, const Projection& projection) {
  std::string path;
  for (const auto& outline : outlines) path += projection.PathOf(outline, "Z");
  return path;
}

/// Each county as what is most severe in it.
std::string CountiesSvg(const std::vector<Warned>& warned, const Projection& projection) {
  std::map<std::string, std::size_t> ranks;
  for (const auto& one : warned)
    for (const auto& county : one.counties) ranks[county] = std::max(ranks[county], one.rank);
  std::array<std::string, kClasses.size()> paths;
  for (const auto& [county, rank] : ranks)
    paths[rank] += PathOf(CountyOutlines::Built().PartsOf(county), projection);
  std::string svg;
  for (std::size_t rank = 0; rank < paths.size(); ++rank)
    svg += fmt::format(R"(<path class="area {}" d="{}"/>)", kClasses[rank], paths[rank]);
  return svg;
}

std::string OutlinesSvg(const std::vector<Warned>& warned, const Projection& projection) {
  std::string svg;
  for (std::size_t rank = 0; rank < kClasses.size(); ++rank) {
    std::string path;
    for (const auto& one : warned)
      if (one.rank == rank) path += PathOf(one.outlines, projection);
    svg += fmt::format(R"(<path class="area exact {}" d="{}"/>)", kClasses[rank], path);
  }
  return svg;
}

std::string NamesSvg(const Bounds& shown, const Projection& projection) {
  std::string svg;
  for (const auto& county : CountyOutlines::Built().Counties()) {
    const auto* const area = Areas::Built().Find(county);
    if (area == nullptr || !area->centre) continue;
    Bounds place;
    place.Include(*area->centre);
    if (!place.Touches(shown)) continue;
    svg += fmt::format(R"(<text x="{:.0f}" y="{:.0f}">{}</text>)", projection.X(*area->centre),
                       projection.Y(*area->centre), Html(area->name));
  }
  return svg;
}

std::string HomeSvg(Position home, const Projection& projection) {
  return fmt::format(R"(<circle class="home" cx="{0:.0f}" cy="{1:.0f}" r="9"/>)"
                     R"(<circle class="homes-middle" cx="{0:.0f}" cy="{1:.0f}" r="3"/>)",
                     projection.X(home), projection.Y(home));
}

}  // namespace

std::string MapSvg(std::optional<Position> home, const std::vector<const ShownEvent*>& events) {
  std::vector<Warned> warned;
  for (const auto* event : events) {
    warned.push_back(WarnedBy(*event));
    if (warned.back().bounds.IsEmpty()) warned.pop_back();
  }
  if (!home && warned.empty()) return "";
  const auto middle = home ? *home : warned.front().bounds.Middle();
  const auto shown = ShownAround(middle, warned);
  const Projection projection(shown);
  std::erase_if(warned, [&](const auto& one) { return !one.bounds.Touches(shown); });
  auto svg = fmt::format(R"(<svg class="map" viewBox="0 0 {:.0f} {:.0f}" role="img" )"
                         R"(aria-labelledby="map-title"><title id="map-title">{}</title>)",
                         kWidth, projection.Height(), page_texts::kMapMeans);
  svg += CountiesSvg(warned, projection) + BordersSvg(shown, projection) +
         OutlinesSvg(warned, projection);
  if (shown.north - shown.south <= kMostHeightWithNames) svg += NamesSvg(shown, projection);
  if (home) svg += HomeSvg(*home, projection);
  return svg + "</svg>\n";
}

}  // namespace ostrel
