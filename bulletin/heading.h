// The lines at the top of a bulletin: which one it is.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "bulletin/dates.h"

namespace ostrel {

/// Fields of the abbreviated heading (WMO Manual on the GTS, attachment II-5) and of the AWIPS
/// identifier below it (NWS directive 10-1701). Empty where there is none.
struct BulletinHeading {
  std::string line;              // "WFUS53 KDMX 192054 CCA"
  std::string office;            // "KDMX"
  std::optional<DayTime> time;   // nothing for a time that is none
  std::string identifier, kind;  // "TORDMX", "TOR"
};

/// Reads them out of the first lines; in front of the heading may stand what transmission adds: a
/// sequence number, an address. An identifier is what has its form and a kind that is known, or
/// ends in the heading's office, or has all six letters.
BulletinHeading ReadHeading(std::span<const std::string_view> lines);

/// The same for lines that came apart from a text; empty ones are of no account.
BulletinHeading ReadHeading(std::string_view heading, std::string_view identifier);

}  // namespace ostrel
