#include "bulletin/position.h"

#include <algorithm>

#include "bulletin/letters.h"

namespace ostrel {
namespace {

constexpr std::string_view kPolygon = "LAT...LON", kMotion = "TIME...MOT...LOC";
constexpr double kHundredth = 100;

/// The degrees of a latitude's four digits.
std::optional<double> Latitude(std::string_view digits) {
  const auto number = digits.size() == 4 ? WholeNumber(digits) : std::nullopt;
  return number && *number <= 9000 ? std::optional(*number / kHundredth) : std::nullopt;
}

/// The degrees of a longitude's four or five digits.
std::optional<double> Longitude(std::string_view digits) {
  constexpr int kHundred = 10000, kLeast = 4000, kMost = 18000;
  auto number = digits.size() == 4 || digits.size() == 5 ? WholeNumber(digits) : std::nullopt;
  if (!number) return std::nullopt;
  if (digits.size() == 4 && *number < kLeast) *number += kHundred;
  if (digits.size() == 5 && *number < kHundred) return std::nullopt;
  return *number <= kMost ? std::optional(*number / kHundredth) : std::nullopt;
}

/// Gathers pairs of latitudes and longitudes from words.
class Pairs {
 public:
  explicit Pairs(Hemispheres signs) : signs_(signs) {}

  /// False for a word that cannot stand there.
  bool Take(std::string_view word) {
    constexpr std::size_t kBoth = 8, kHalf = 4;
    if (word.size() == kBoth) {
      if (latitude_ || signs_ != Hemispheres{}) return false;
      return Take(word.substr(0, kHalf)) && Take(word.substr(kHalf));
    }
    if (!latitude_) {
      latitude_ = Latitude(word);
      return latitude_.has_value();
    }
    const auto longitude = Longitude(word);
    if (!longitude || places_.size() == kMostCorners) return false;
    places_.push_back({*latitude_ * signs_.latitude, *longitude * signs_.longitude});
    latitude_.reset();
    return true;
  }

  bool TakeAll(std::string_view text) {
    for (auto word = TakeWord(text); !word.empty(); word = TakeWord(text)) {
      if (!Take(word)) return false;
    }
    return true;
  }

  /// Nothing with fewer places than `least`, with half a one, or with one far from the others.
  std::optional<std::vector<Position>> All(std::size_t least) const {
    if (latitude_ || places_.size() < least) return std::nullopt;
    const auto [south, north] = std::minmax_element(
        places_.begin(), places_.end(),
        [](const Position& a, const Position& b) { return a.latitude < b.latitude; });
    const auto [west, east] = std::minmax_element(
        places_.begin(), places_.end(),
        [](const Position& a, const Position& b) { return a.longitude < b.longitude; });
    const bool isCoherent = north->latitude - south->latitude <= kMostLatitudes &&
                            east->longitude - west->longitude <= kMostLongitudes;
    return isCoherent ? std::optional(places_) : std::nullopt;
  }

 private:
  Hemispheres signs_;
  std::optional<double> latitude_;
  std::vector<Position> places_;
};

bool IsOfPlaces(std::string_view line) {
  for (auto word = TakeWord(line); !word.empty(); word = TakeWord(line)) {
    if (word.size() != 4 && word.size() != 5 && word.size() != 8) return false;
  }
  return true;
}

/// How many lines go on with nothing but numbers. Below an empty line they must be places.
std::size_t LinesOfNumbers(std::span<const std::string_view> lines) {
  const auto isOfNumbers = [](char c) { return IsDigit(c) || c == ' '; };
  std::size_t count = 0;
  for (std::size_t i = 0; i < lines.size() && i <= count + 1; ++i) {
    if (lines[i].empty()) continue;
    if (!ConsistsOf(lines[i], isOfNumbers) || (i > count && !IsOfPlaces(lines[i]))) break;
    count = i + 1;
  }
  return count;
}

bool TakePlaces(std::string_view first, std::span<const std::string_view> more, Pairs& pairs) {
  bool isRight = pairs.TakeAll(first);
  for (const auto line : more) isRight = isRight && pairs.TakeAll(line);
  return isRight;
}

/// The number in front of `unit` in the next word of `text`.
std::optional<int> TakeMeasure(std::string_view& text, std::string_view unit) {
  auto word = TakeWord(text);
  if (!word.ends_with(unit)) return std::nullopt;
  word.remove_suffix(unit.size());
  return WholeNumber(word);
}

std::optional<Motion> TakeMovement(std::string_view& text) {
  const auto time = TakeWord(text);
  const auto clock =
      time.size() == 5 && time.back() == 'Z' ? WholeNumber(time.substr(0, 4)) : std::nullopt;
  const auto from = TakeMeasure(text, "DEG"), knots = TakeMeasure(text, "KT");
  if (!clock || *clock / 100 > 23 || *clock % 100 > 59 || !from || *from > 360 || !knots)
    return std::nullopt;
  return Motion{.at = {*clock / 100, *clock % 100}, .from = *from, .knots = *knots, .places = {}};
}

}  // namespace

std::optional<Placed<Polygon>> ReadPolygon(std::span<const std::string_view> lines,
                                           std::optional<Hemispheres> signs) {
  if (lines.empty() || !lines.front().starts_with(kPolygon)) return std::nullopt;
  const auto more = LinesOfNumbers(lines.subspan(1));
  Placed<Polygon> read{.lines = 1 + more, .what = std::nullopt};
  Pairs pairs(signs.value_or(Hemispheres{}));
  if (signs && TakePlaces(lines.front().substr(kPolygon.size()), lines.subspan(1, more), pairs))
    read.what = pairs.All(3);
  return read;
}

std::optional<Placed<Motion>> ReadMotion(std::span<const std::string_view> lines,
                                         std::optional<Hemispheres> signs) {
  if (lines.empty() || !lines.front().starts_with(kMotion)) return std::nullopt;
  const auto more = LinesOfNumbers(lines.subspan(1));
  Placed<Motion> read{.lines = 1 + more, .what = std::nullopt};
  auto text = lines.front().substr(kMotion.size());
  auto motion = TakeMovement(text);
  Pairs pairs(signs.value_or(Hemispheres{}));
  if (!signs || !motion || !TakePlaces(text, lines.subspan(1, more), pairs)) return read;
  const auto places = pairs.All(1);
  if (!places) return read;
  motion->places = *places;
  read.what = std::move(motion);
  return read;
}

}  // namespace ostrel
