// Messages of the Common Alerting Protocol (OASIS CAP 1.2) in the shape of a bulletin.
#pragma once

#include <string_view>

#include "bulletin/bulletin.h"

namespace ostrel {

/// A CAP message stands in `text`, perhaps below a bulletin's heading.
bool IsCap(std::string_view text);

/// Reads it into `bulletin`: a segment for each area of each information, and of several languages
/// the English one. Its events are those of its event codes; without any, the message is one event,
/// NEW, CON or CAN by its type, whose earlier messages its references name. Damaged when it is not
/// well-formed.
void ReadCap(std::string_view text, Bulletin& bulletin);

}  // namespace ostrel
