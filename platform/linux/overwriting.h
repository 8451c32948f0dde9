// Replacing the content of a file that cannot be replaced itself: in a folder with the sticky bit,
// another account's file can be neither removed nor renamed over, only written. The new content
// stands whole beside the file meanwhile, under a hidden name that tells which file it is for, so
// that the next start finishes what was cut off.
#pragma once

#include <string>
#include <string_view>

namespace ostrel {

/// The hidden name beside `path` for the content that is to overwrite it.
std::string WholePath(const std::string& path);
/// True for the names that WholePath gives.
bool IsWholeName(std::string_view name);

/// Makes the content of the open file `source` that of the plain file at `path`, and flushes it.
/// Takes the room first, so that a full disk changes nothing. Returns 0 or the system's error.
int Overwrite(int source, const std::string& path);

/// Overwrites the file that the content at `whole` is for, and drops it. Leaves alone what a
/// process is at work on, and drops what its maker could not have written into the file.
void FinishOverwriting(const std::string& whole);

}  // namespace ostrel
