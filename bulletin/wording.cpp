#include "bulletin/wording.h"

#include <algorithm>

#include "base/text.h"
#include "bulletin/codes.h"

namespace ostrel {
namespace {

constexpr std::string_view kDots = "...";

void Append(std::string& text, std::string_view line) {
  if (!text.empty()) text += ' ';
  text += line;
}

bool GoesOn(std::string_view name) {
  return name == "SOURCE" || name == "HAZARD" || name == "IMPACT";
}

}  // namespace

std::optional<std::string> ReadHeadline(std::span<const std::string_view> lines) {
  constexpr std::size_t kLongest = 8;
  if (lines.empty() || !lines.front().starts_with(kDots)) return std::nullopt;
  std::string text;
  for (const auto line : lines.first(std::min(lines.size(), kLongest))) {
    if (line.empty()) return std::nullopt;
    Append(text, line);
    if (text.size() <= 2 * kDots.size() || !text.ends_with(kDots)) continue;
    text = text.substr(kDots.size(), text.size() - 2 * kDots.size());
    return TrimBlanks(text).empty() ? std::nullopt : std::optional(text);
  }
  return std::nullopt;
}

std::optional<Tag> ReadTag(std::span<const std::string_view> lines) {
  if (lines.empty()) return std::nullopt;
  const auto line = lines.front();
  const auto dots = line.find(kDots);
  if (dots == std::string_view::npos) return std::nullopt;
  auto name = line.substr(0, dots);
  auto value = line.substr(dots + kDots.size());
  if (name == "WIND" && value.starts_with("HAIL ")) {  // "WIND...HAIL 60MPH 1.00IN"
    name = "WIND...HAIL";
    value.remove_prefix(5);
  }
  if (!MeaningOf(CodeTable::kTag, name) || value.empty()) return std::nullopt;
  Tag tag{.name = std::string(name), .value = std::string(value)};
  if (!GoesOn(name)) return tag;
  for (const auto more : lines.subspan(1)) {
    if (more.empty() || more.find(kDots) != std::string_view::npos) break;
    Append(tag.value, more);
  }
  return tag;
}

}  // namespace ostrel
