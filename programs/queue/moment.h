// The times that operators write.
#pragma once

#include <string>

#include "base/time.h"

namespace ostrel {

/// Of the two moments of a time that comes twice, in the hour when summer time ends.
enum class Which { kFirst, kLast };

/// "2026-11-26", "2026-11-26 14:30", "14:30" (the last that was), or "3d", "12h", "30m" before
/// `now`, in local time; in UTC with a Z behind it. Throws Failure for any other text.
UtcTime MomentIn(const std::string& text, UtcTime now, Which which);

}  // namespace ostrel
