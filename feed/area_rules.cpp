#include "feed/area_rules.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <fmt/format.h>
#include <fnmatch.h>
#include <numbers>
#include <set>

#include "base/failure.h"
#include "base/names.h"
#include "feed/placing.h"
#include "platform/linux/file_io.h"
#include "platform/linux/system_error.h"

namespace ostrel {
namespace {

constexpr std::size_t kLetters = 3;  // "IAC"

/// Kilometres on a sphere of the earth's mean radius.
double Distance(const Position& a, const Position& b) {
  constexpr double kRadius = 6371.0, kDegree = std::numbers::pi / 180;
  const double latitude = (b.latitude - a.latitude) * kDegree / 2;
  const double longitude = (b.longitude - a.longitude) * kDegree / 2;
  const double h = std::pow(std::sin(latitude), 2) + std::cos(a.latitude * kDegree) *
                                                         std::cos(b.latitude * kDegree) *
                                                         std::pow(std::sin(longitude), 2);
  return 2 * kRadius * std::asin(std::min(1.0, std::sqrt(h)));
}

/// Kilometres from `place` to the line between two corners, on the plane that touches the earth
/// there.
double DistanceToEdge(const Position& place, const Position& a, const Position& b) {
  constexpr double kDegree = 111.2;
  const double narrowing = std::cos(place.latitude * std::numbers::pi / 180);
  const auto x = [&](const Position& p) {
    return (p.longitude - place.longitude) * kDegree * narrowing;
  };
  const auto y = [&](const Position& p) { return (p.latitude - place.latitude) * kDegree; };
  const double dx = x(b) - x(a), dy = y(b) - y(a), length = dx * dx + dy * dy;
  const double along = length > 0 ? std::clamp(-(x(a) * dx + y(a) * dy) / length, 0.0, 1.0) : 0.0;
  return std::hypot(x(a) + along * dx, y(a) + along * dy);
}

bool ComesNear(const Polygon& polygon, const Circle& circle) {
  for (std::size_t i = 0, j = polygon.size() - 1; i < polygon.size(); j = i++) {
    if (DistanceToEdge(circle.centre, polygon[j], polygon[i]) <= circle.radius) return true;
  }
  return false;
}

/// True where a line to the north crosses the outline an odd number of times.
bool Holds(const Polygon& polygon, const Position& place) {
  bool isInside = false;
  for (std::size_t i = 0, j = polygon.size() - 1; i < polygon.size(); j = i++) {
    const auto &a = polygon[i], &b = polygon[j];
    const bool spans = (a.longitude > place.longitude) != (b.longitude > place.longitude);
    if (!spans) continue;
    const double share = (place.longitude - a.longitude) / (b.longitude - a.longitude);
    if (place.latitude < a.latitude + share * (b.latitude - a.latitude)) isInside = !isInside;
  }
  return isInside;
}

/// "IAC000" and "IACALL" are all areas of their kind in the state.
bool IsWholeState(std::string_view code) {
  const auto number = code.substr(kLetters);
  return number == "000" || number == "ALL";
}

/// A zone of a sea or a lake, which has no counties (NWS directive 10-1702, marine areas).
bool IsOfWaters(std::string_view code) {
  constexpr std::array<std::string_view, 15> kWaters = {
      "AM", "AN", "GM", "LC", "LE", "LH", "LM", "LO", "LS", "PH", "PK", "PM", "PS", "PZ", "SL"};
  return std::ranges::count(kWaters, code.substr(0, 2)) > 0;
}

bool MatchesCode(const std::string& pattern, const std::string& code) {
  if (fnmatch(pattern.c_str(), code.c_str(), FNM_CASEFOLD) == 0) return true;
  return IsWholeState(code) && fnmatch(pattern.substr(0, kLetters).c_str(),
                                       code.substr(0, kLetters).c_str(), FNM_CASEFOLD) == 0;
}

bool HasAny(const std::vector<std::string>& patterns, const std::set<std::string>& words) {
  return std::ranges::any_of(patterns, [&](const std::string& pattern) {
    return std::ranges::any_of(words,
                               [&](const std::string& word) { return MatchesCode(pattern, word); });
  });
}

}  // namespace

struct AreaRules::Traits {
  std::set<std::string> codes;  // the counties of zones, too
  std::vector<Position> centres;
  bool areAllPlaced = true;  // every area has a centre
  bool areAllKnown = true;   // the counties of every zone are known
  std::vector<Polygon> polygons;
  std::set<std::string> offices;
  std::string kind;
};

AreaRules::Traits AreaRules::TraitsOf(const Bulletin& bulletin) const {
  Traits traits;
  traits.kind = bulletin.kind;
  for (const auto& segment : bulletin.segments) {
    for (const auto& code : segment.areas) {
      traits.codes.insert(code);
      const auto* const area = areas_.Find(code);
      if (area) traits.codes.insert(area->counties.begin(), area->counties.end());
      if (area && area->centre) traits.centres.push_back(*area->centre);
      traits.areAllPlaced &= area && area->centre;
      traits.areAllKnown &= area || code[2] == 'C' || IsWholeState(code) || IsOfWaters(code);
    }
    traits.polygons.insert(traits.polygons.end(), segment.polygons.begin(), segment.polygons.end());
    for (const auto& event : segment.events) traits.offices.insert(event.office);
  }
  constexpr std::size_t kOffice = 7;  // "WFUS53 KDMX 192054"
  if (bulletin.heading.size() >= kOffice + 4)
    traits.offices.insert(bulletin.heading.substr(kOffice, 4));
  return traits;
}

AreaRules::Fit AreaRules::FitWithin(const Circle& circle, const Traits& traits) const {
  const auto isNear = [&](const Position& place) {
    return Distance(circle.centre, place) <= circle.radius;
  };
  const auto reaches = [&](const Polygon& polygon) {
    return Holds(polygon, circle.centre) || ComesNear(polygon, circle);
  };
  if (std::ranges::any_of(traits.centres, isNear) || std::ranges::any_of(traits.polygons, reaches))
    return Fit::kYes;
  return traits.areAllPlaced ? Fit::kNo : Fit::kUnknown;
}

AreaRules::Fit AreaRules::FitOf(const AreaRule& rule, const Traits& traits) const {
  if (!rule.kinds.empty() && std::ranges::count(rule.kinds, traits.kind) == 0) return Fit::kNo;
  if (!rule.offices.empty() && std::ranges::none_of(rule.offices, [&](const auto& office) {
        return traits.offices.contains(office);
      }))
    return Fit::kNo;
  if (!rule.codes.empty() && !HasAny(rule.codes, traits.codes))
    return traits.areAllKnown ? Fit::kNo : Fit::kUnknown;
  return rule.within ? FitWithin(*rule.within, traits) : Fit::kYes;
}

Areas AreasOf(const std::string& station) {
  const auto path = JoinPath(station, "Areas.tsv");
  const auto file = OpenToRead(path, Links::kFollowed);
  if (!file && errno == ENOENT) return Areas::Built();
  if (!file) ThrowFileFailure(errno, path);
  try {
    return Areas::With(ReadOpened(file.Get(), path));
  } catch (const Failure& failure) {
    throw Failure(failure.number(), fmt::format("{}: {}", path, failure.text()));
  }
}

const AreaRule* AreaRules::PassedOverBy(std::string_view product, UtcTime now) const {
  if (rules_.empty()) return nullptr;
  const auto bulletin = ReadBulletin(product, now);
  const bool hasAreas = !bulletin.segments.empty() &&
                        std::ranges::none_of(bulletin.segments, [](const Segment& segment) {
                          return segment.areas.empty();
                        });
  if (bulletin.isDamaged || !hasAreas) return nullptr;
  const auto traits = TraitsOf(bulletin);
  for (const auto& rule : rules_) {
    const auto fit = FitOf(rule, traits);
    if (fit == Fit::kUnknown) return nullptr;
    if (fit == Fit::kYes) return rule.isTaken ? nullptr : &rule;
  }
  return nullptr;
}

std::string Spell(const AreaRule& rule) {
  std::vector<std::string> parts;
  if (!rule.kinds.empty()) parts.push_back(fmt::format("{}", fmt::join(rule.kinds, " or ")));
  if (!rule.offices.empty()) parts.push_back(fmt::format("of {}", fmt::join(rule.offices, " or ")));
  if (!rule.codes.empty()) parts.push_back(fmt::format("for {}", fmt::join(rule.codes, " or ")));
  if (rule.within)
    parts.push_back(fmt::format("within {} km of {:.2f} {:.2f}", rule.within->radius,
                                rule.within->centre.latitude, rule.within->centre.longitude));
  return parts.empty() ? "the rest" : fmt::format("{}", fmt::join(parts, ", "));
}

}  // namespace ostrel
