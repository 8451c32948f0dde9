// The tables of codes.tsv: what the letters of bulletins stand for. They change from year to year;
// a code that no table has is shown as it is.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

enum class CodeTable { kKind, kAction, kPhenomenon, kSignificance, kOffice, kTag, kNoIdentifier };

/// What `code` stands for: "TO" is "Tornado". Nothing for an unknown one.
std::optional<std::string_view> MeaningOf(CodeTable table, std::string_view code);

/// The offset of a time zone's letters ("CDT", in any case) from UTC, east positive.
std::optional<std::chrono::minutes> TimeZoneOffset(std::string_view letters);

/// The area code of a SAME location, six digits (a part of the county, the state, the county, as in
/// 47 CFR 11.31): "019153" is "IAC153", "075610" "AMZ610". Nothing for an unknown state.
std::optional<std::string> AreaOfSame(std::string_view location);

/// The signs of an office's latitudes and longitudes, which its bulletins leave out.
struct Hemispheres {
  int latitude = 1, longitude = -1;
  friend bool operator==(const Hemispheres&, const Hemispheres&) = default;
};
/// By four letters of an office ("PGUM"), or of an area ("GUZ001"); nothing for unknown ones.
std::optional<Hemispheres> HemispheresOf(std::string_view officeOrArea);

}  // namespace ostrel
