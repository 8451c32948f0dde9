// Renaming that never replaces another file.
#pragma once

#include <string>

namespace ostrel {

/// Renames `from` to `to`. Returns 0 or the system's error: EEXIST where `to` is taken.
int RenameWithoutReplacing(const std::string& from, const std::string& to);

/// Renames `from` to `path`, or where that is taken to the first free name after it, which `path`
/// is then. Returns 0 or the system's error.
int RenameToFree(const std::string& from, std::string& path);

}  // namespace ostrel
