// Which of the events that products told of are in force at a moment. Certain or nothing: what was
// cancelled, expired, upgraded or replaced, is a test, or has no end that is certain, is not.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "bulletin/bulletin.h"

namespace ostrel {

struct ReceivedBulletin {
  Bulletin bulletin;
  UtcTime received;
};

/// An event in force, as the segment tells it that had the last word on it for these areas. An
/// event whose segments differ has a row for each.
struct EventInForce {
  std::size_t bulletin = 0, segment = 0, event = 0;  // where that stands
  /// The same through the life of the event: "KDMX.TO.W.0043", or of a CAP message without event
  /// codes its sender and identifier.
  std::string identity;
  std::vector<std::string> areas;  // sorted; empty only where the segment has but an outline
  UtcTime since;                   // when the first product of the event was issued
  UtcTime until;                   // in the future; of `isUntilFurtherNotice` when the text ends
  bool isUntilFurtherNotice = false;
  /// False when that bulletin is damaged: what could not be read of it may have said more.
  bool isCertain = true;
};

/// What is in force at `now`, or announced (Event::begins may be in the future), in the order of
/// its last words, the newest last. `bulletins` may be in any order: what was issued later comes
/// later, and of the same minute what stands later. A CAP message takes the place of those that it
/// references; all others go on by their event codes: office, phenomenon, significance and number.
std::vector<EventInForce> FindInForce(std::span<const ReceivedBulletin> bulletins, UtcTime now);

}  // namespace ostrel
