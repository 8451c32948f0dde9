#include "listen/county_outlines.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <iterator>
#include <stdexcept>

#include "base/text.h"
#include "listen/outlines_table.h"

namespace ostrel {
namespace {

/// Takes the number at the front of `text` off, and blanks before it. Throws std::runtime_error.
int TakeNumber(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{}) throw std::runtime_error("no number");
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return number;
}

}  // namespace

void Bounds::Include(Position place) {
  south = std::min(south, place.latitude);
  north = std::max(north, place.latitude);
  west = std::min(west, place.longitude);
  east = std::max(east, place.longitude);
}

void Bounds::Include(const Bounds& other) {
  if (other.IsEmpty()) return;
  Include(Position{other.south, other.west});
  Include(Position{other.north, other.east});
}

bool Bounds::Touches(const Bounds& other) const {
  return south <= other.north && other.south <= north && west <= other.east && other.west <= east;
}

const CountyOutlines& CountyOutlines::Built() {
  static const CountyOutlines built(kOutlinesTable);
  return built;
}

CountyOutlines::CountyOutlines(std::string_view table) {
  int number = 0;
  ForEachLine(table, [&](std::string_view line) {
    ++number;
    if (line.empty() || line.front() == '#') return;
    try {
      line.starts_with("s ") || line.starts_with("c ") ? AddBorder(line) : AddCounty(line);
    } catch (const std::runtime_error& error) {
      throw std::runtime_error(fmt::format("line {}: {}", number, error.what()));
    }
  });
}

void CountyOutlines::AddBorder(std::string_view line) {
  Border border;
  border.isOfState = line.front() == 's';
  line.remove_prefix(1);
  for (int east = 0, north = 0; !line.empty();) {
    east += TakeNumber(line);
    north += TakeNumber(line);
    border.corners.push_back({north / 100.0, east / 100.0});
    border.bounds.Include(border.corners.back());
  }
  borders_.push_back(std::move(border));
}

void CountyOutlines::AddCounty(std::string_view line) {
  const auto blank = std::min(line.find(' '), line.size());
  auto& parts = counties_[std::string(line.substr(0, blank))];
  parts.emplace_back();
  line.remove_prefix(blank);
  while (!line.empty()) {
    if (line.front() == ',') {
      parts.emplace_back();
      line.remove_prefix(1);
    }
    const int index = TakeNumber(line);
    const auto border = static_cast<std::size_t>(index < 0 ? ~index : index);
    if (border >= borders_.size()) throw std::runtime_error("no such border");
    parts.back().push_back(index);
  }
}

std::vector<std::string> CountyOutlines::Counties() const {
  std::vector<std::string> codes;
  codes.reserve(counties_.size());
  for (const auto& [code, parts] : counties_) codes.push_back(code);
  return codes;
}

std::vector<Polygon> CountyOutlines::PartsOf(const std::string& county) const {
  std::vector<Polygon> rings;
  const auto found = counties_.find(county);
  if (found == counties_.end()) return rings;
  for (const auto& part : found->second) {
    auto& ring = rings.emplace_back();
    for (const int index : part) {
      const auto& corners = borders_[static_cast<std::size_t>(index < 0 ? ~index : index)].corners;
      index < 0 ? std::copy(corners.rbegin(), corners.rend(), std::back_inserter(ring))
                : std::copy(corners.begin(), corners.end(), std::back_inserter(ring));
    }
  }
  return rings;
}

}  // namespace ostrel
