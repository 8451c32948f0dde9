// What the system's file calls leave to their caller: reading and writing on an open descriptor to
// the end, whatever one call does, and times in the system's form.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <sys/stat.h>
#include <time.h>

#include "base/time.h"

namespace ostrel {

/// Opens a file with the access that `flags` ask for, or makes it; close-on-exec, and never through
/// a link as its last component. Returns a descriptor, or -1 with the system's error in errno.
int OpenOrMake(const char* path, int flags, unsigned mode = 0666);

/// Writes all of `bytes`. Returns 0 or the system's error.
int WriteFully(int descriptor, std::string_view bytes);

/// Reads from byte `offset` on until `buffer` is full or the file ends. Returns how many bytes were
/// there, or a negative system error.
std::int64_t ReadFully(int descriptor, std::int64_t offset, std::span<char> buffer);

/// `time` as the system takes it.
timespec ToTimespec(UtcTime time);
/// The last-write time, to the millisecond below.
UtcTime WriteTimeOf(const struct stat& status);

}  // namespace ostrel
