// What the system's file calls leave to their caller: reading and writing on an open descriptor to
// the end, whatever one call does, times in the system's form, and whether a file changed.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <time.h>

#include "base/time.h"
#include "platform/files.h"
#include "platform/linux/descriptor.h"

namespace ostrel {

/// Opens a file with the access that `flags` ask for, or makes it; close-on-exec, and never through
/// a link as its last component. Returns a descriptor, or -1 with the system's error in errno.
int OpenOrMake(const char* path, int flags, unsigned mode = 0666);

/// Opens a file. Never waits, not even for the other end of a pipe that someone put there; where
/// links are followed, what is no regular file is refused with EISDIR.
Descriptor OpenToRead(const std::string& path, Links links);

/// The folder that a file at `path` is created in.
std::string FolderToCreateIn(const std::string& path);

/// What was made, renamed and deleted in the folder survives a power failure from here on. Throws
/// Failure.
void FlushFolder(const std::string& folder);

/// Writes all of `bytes`. Returns 0 or the system's error.
int WriteFully(int descriptor, std::string_view bytes);

/// Reads from byte `offset` on until `buffer` is full or the file ends. Returns how many bytes were
/// there, or a negative system error.
std::int64_t ReadFully(int descriptor, std::int64_t offset, std::span<char> buffer);

/// `time` as the system takes it.
timespec ToTimespec(UtcTime time);
/// The last-write time, to the millisecond below.
UtcTime WriteTimeOf(const struct stat& status);

/// True when nobody wrote to the file between the one look at it and the other.
bool IsSameContent(const struct stat& one, const struct stat& other);
/// True when the open file stands as `status` told.
bool IsUnchanged(int descriptor, const struct stat& status);

}  // namespace ostrel
