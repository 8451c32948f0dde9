// The rate of a terminal line, whatever number of bits per second. A file of its own: the system's
// header for rates without a name of their own clashes with the one for everything else of a line.
#pragma once

#include <cstdint>

namespace ostrel {

/// Sets the rate of the open terminal `descriptor`, both ways. False when the driver does not take
/// it, or takes one that is more than a fiftieth off: a receiver would not follow.
bool SetLineRate(int descriptor, std::int32_t rate);
/// What the driver says of its rate; 0 when it does not.
std::int64_t LineRate(int descriptor);

}  // namespace ostrel
