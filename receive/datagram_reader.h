// The station's datagrams: "R00", two digits and a packet, or "E0000" at the end of the stream.
#pragma once

#include <optional>
#include <string_view>

#include "receive/stream_decoder.h"

namespace ostrel {

/// Takes one datagram apart: a packet, a damaged one, or noise where it is none of the station's.
/// Nothing for the end of the stream.
std::optional<StreamEvent> ReadDatagram(std::string_view datagram);

}  // namespace ostrel
