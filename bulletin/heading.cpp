#include "bulletin/heading.h"

#include <array>

#include "bulletin/codes.h"
#include "bulletin/letters.h"

namespace ostrel {
namespace {

/// "WFUS53 KDMX 192054", with three letters more for a correction or a part.
bool TakeHeading(std::string_view line, BulletinHeading& heading) {
  auto rest = line;
  const auto bulletin = TakeWord(rest), office = TakeWord(rest), time = TakeWord(rest);
  const auto part = TakeWord(rest);
  const bool isHeading =
      bulletin.size() == 6 && ConsistsOf(bulletin.substr(0, 4), IsUpper) &&
      ConsistsOf(bulletin.substr(4), IsDigit) && office.size() == 4 && IsUpper(office.front()) &&
      ConsistsOf(office, IsUpperOrDigit) && time.size() == 6 && ConsistsOf(time, IsDigit) &&
      (part.empty() || (part.size() == 3 && ConsistsOf(part, IsUpper))) && TakeWord(rest).empty();
  if (!isHeading || line.find(',') != std::string_view::npos) return false;
  heading.line = line;
  heading.office = office;
  heading.time = ReadDayTime(time);
  return true;
}

bool HasFormOfIdentifier(std::string_view line) {
  return line.size() >= 4 && line.size() <= 6 && ConsistsOf(line.substr(0, 2), IsUpper) &&
         ConsistsOf(line, IsUpperOrDigit) && !MeaningOf(CodeTable::kNoIdentifier, line);
}

void SetIdentifier(std::string_view line, BulletinHeading& heading) {
  heading.identifier = line;
  heading.kind = line.substr(0, 3);
}

}  // namespace

BulletinHeading ReadHeading(std::string_view line, std::string_view identifier) {
  BulletinHeading heading;
  TakeHeading(line, heading);
  if (!HasFormOfIdentifier(identifier)) return heading;
  const bool isKnown = MeaningOf(CodeTable::kKind, identifier.substr(0, 3)).has_value();
  const bool isOfOffice = heading.office.size() == 4 && identifier.size() == 6 &&
                          identifier.substr(3) == heading.office.substr(1);
  if (isKnown || isOfOffice || (identifier.size() == 6 && !heading.line.empty()))
    SetIdentifier(identifier, heading);
  return heading;
}

BulletinHeading ReadHeading(std::span<const std::string_view> lines) {
  constexpr std::size_t kSearched = 8;
  std::array<std::string_view, kSearched> shown{};  // without empty lines
  std::size_t count = 0;
  for (const auto line : lines) {
    if (!line.empty()) shown[count++] = line;
    if (count == kSearched) break;
  }
  for (std::size_t i = 0; i < count; ++i) {
    BulletinHeading heading;
    if (TakeHeading(shown[i], heading))
      return ReadHeading(shown[i], i + 1 < count ? shown[i + 1] : std::string_view{});
  }
  // Without a heading only an identifier of a known kind is certain, at the very top.
  const std::size_t top = count > 1 && ConsistsOf(shown[0], IsDigit) ? 1 : 0;
  return ReadHeading({}, shown[top]);
}

}  // namespace ostrel
