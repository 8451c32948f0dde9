#include "bulletin/cap_values.h"

#include <algorithm>
#include <charconv>

#include "bulletin/dates.h"
#include "bulletin/letters.h"

namespace ostrel {
namespace {

std::optional<double> ReadNumber(std::string_view text) {
  double number = 0;
  const auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
  return error == std::errc{} && end == text.data() + text.size() ? std::optional(number)
                                                                  : std::nullopt;
}

/// "42.06,-93.36"
std::optional<Position> ReadPlace(std::string_view text) {
  const auto comma = text.find(',');
  if (comma == std::string_view::npos) return std::nullopt;
  const auto latitude = ReadNumber(text.substr(0, comma)),
             longitude = ReadNumber(text.substr(comma + 1));
  if (!latitude || !longitude || !(*latitude >= -90 && *latitude <= 90) ||
      !(*longitude >= -180 && *longitude <= 180))
    return std::nullopt;
  return Position{*latitude, *longitude};
}

}  // namespace

std::string_view TakeCapPart(std::string_view& text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  const auto part = text.substr(0, text.find_first_of(kBlanks));
  text.remove_prefix(part.size());
  return part;
}

std::optional<Polygon> ReadCapPolygon(std::string_view text) {
  Polygon polygon;
  for (auto part = TakeCapPart(text); !part.empty(); part = TakeCapPart(text)) {
    const auto place = ReadPlace(part);
    if (!place) return std::nullopt;
    polygon.push_back(*place);
  }
  return polygon.size() >= 3 ? std::optional(std::move(polygon)) : std::nullopt;
}

std::optional<Circle> ReadCapCircle(std::string_view text) {
  const auto centre = ReadPlace(TakeCapPart(text));
  const auto radius = ReadNumber(TakeCapPart(text));
  if (!centre || !radius || *radius < 0 || !TakeCapPart(text).empty()) return std::nullopt;
  return Circle{*centre, *radius};
}

std::optional<UtcTime> ReadCapTime(std::string_view text) {
  constexpr std::string_view kForm = "####-##-##T##:##:##";
  const auto number = [&](std::size_t at, std::size_t size) {
    return WholeNumber(text.substr(at, size)).value_or(-1);
  };
  if (text.size() < kForm.size() + 1) return std::nullopt;
  for (std::size_t i = 0; i < kForm.size(); ++i) {
    if (kForm[i] == '#' ? !IsDigit(text[i]) : text[i] != kForm[i]) return std::nullopt;
  }
  const auto local =
      MomentOf(number(0, 4), number(5, 2), number(8, 2), number(11, 2), number(14, 2));
  const auto zone = text.substr(kForm.size());
  if (!local || number(17, 2) > 59) return std::nullopt;
  const auto moment = *local + seconds(number(17, 2));
  if (zone == "Z") return moment;
  const bool hasForm = zone.size() == 6 && (zone[0] == '+' || zone[0] == '-') && zone[3] == ':';
  const int hours = hasForm ? WholeNumber(zone.substr(1, 2)).value_or(99) : 99;
  const int minutes = hasForm ? WholeNumber(zone.substr(4, 2)).value_or(99) : 99;
  if (hours > 14 || minutes > 59) return std::nullopt;
  const auto offset = std::chrono::minutes(hours * 60 + minutes);
  return zone[0] == '-' ? moment + offset : moment - offset;
}

}  // namespace ostrel
