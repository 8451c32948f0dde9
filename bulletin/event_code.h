// The codes of events in bulletins.
#pragma once

#include <optional>
#include <string_view>

#include "bulletin/bulletin.h"

namespace ostrel {

/// "/O.NEW.KDMX.TO.W.0043.180719T2054Z-180719T2145Z/" (NWS directive 10-1703, P-VTEC): operational,
/// test (T) or experimental (E, X); action; office; phenomenon; significance; number; begin and
/// end, UTC, of this century, all zeros for one that has passed or is not known. Takes it off the
/// front of `text`; nothing when none stands there. Unknown phenomena pass, unknown actions and
/// significances do not: those are the frame that the code has always had.
std::optional<Event> TakeEventCode(std::string_view& text);

/// "/HOPC1.1.ER.141211T1355Z.141211T2000Z.141212T0600Z.OO/" (H-VTEC of the same directive).
std::optional<Flood> TakeFloodCode(std::string_view& text);

}  // namespace ostrel
