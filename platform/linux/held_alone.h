// Whether a file is still being written by whoever put it there. The system has no exclusive open;
// a write lease comes nearest, for it is granted only while nobody else has the file open.
#pragma once

#include "base/time.h"

namespace ostrel {

/// True when no other process (and no other descriptor of this one) has the open file `descriptor`.
/// Where no lease can be had (a file of another owner, a file system without leases): when nobody
/// has locked it and its last write is at least two seconds before or after `now`.
bool IsHeldAlone(int descriptor, UtcTime now);

}  // namespace ostrel
