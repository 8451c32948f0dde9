#include "bulletin/areas.h"

#include <charconv>
#include <fmt/format.h>

#include "base/failure.h"
#include "base/text.h"
#include "bulletin/letters.h"
#include "bulletin/tables.h"

namespace ostrel {
namespace {

std::string_view TakeField(std::string_view& line) {
  const auto end = std::min(line.find('\t'), line.size());
  const auto field = line.substr(0, end);
  line.remove_prefix(std::min(end + 1, line.size()));
  return field;
}

std::optional<double> Degrees(std::string_view text, double most) {
  double degrees = 0;
  const auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), degrees, std::chars_format::fixed);
  const bool isNumber = error == std::errc{} && end == text.data() + text.size();
  return isNumber && degrees >= -most && degrees <= most ? std::optional(degrees) : std::nullopt;
}

bool IsCode(std::string_view text) {
  return text.size() == 6 && ConsistsOf(text.substr(0, 3), IsUpper) &&
         ConsistsOf(text.substr(3), IsUpperOrDigit);
}

/// False for a line of another form.
bool Read(std::string_view line, Area& area) {
  area.name = TakeField(line);
  const auto latitude = TakeField(line), longitude = TakeField(line);
  if (!latitude.empty() || !longitude.empty()) {
    const auto north = Degrees(latitude, 90), east = Degrees(longitude, 180);
    if (!north || !east) return false;
    area.centre = Position{*north, *east};
  }
  for (auto word = TakeWord(line); !word.empty(); word = TakeWord(line)) {
    if (!IsCode(word)) return false;
    area.counties.emplace_back(word);
  }
  return !area.name.empty();
}

}  // namespace

const Areas& Areas::Built() {
  static const auto built = [] {
    Areas areas;
    areas.Add(kAreasTable);
    return areas;
  }();
  return built;
}

Areas Areas::With(std::string_view table) {
  auto areas = Built();
  areas.Add(table);
  return areas;
}

void Areas::Add(std::string_view table) {
  int number = 0;
  ForEachLine(table, [&](std::string_view line) {
    ++number;
    if (line.empty() || line.front() == '#') return;
    const auto code = TakeField(line);
    Area area;
    if (!IsCode(code) || !Read(line, area))
      throw Failure(failure_number::kTypeMismatch, fmt::format("Line {} is no area.", number));
    areas_.insert_or_assign(std::string(code), std::move(area));
  });
}

const Area* Areas::Find(std::string_view code) const {
  const auto found = areas_.find(code);
  return found == areas_.end() ? nullptr : &found->second;
}

}  // namespace ostrel
