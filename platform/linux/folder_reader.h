// A folder's entries in its own order, read from the system in small portions and no further than
// the caller wants: the first of 100,000 files costs what the first of ten does.
#pragma once

#include <functional>
#include <string>

namespace ostrel {

/// How much is read from the system at once: few for the first entry, many for all of them.
enum class Portion { kFewEntries, kManyEntries };
/// What the visitor of an entry wants next.
enum class Reading { kContinue, kEnough };

/// One entry; good only while it is visited.
struct FolderEntry {
  int folder;          // open descriptor of the folder
  const char* name;    // never "." or ".."
  unsigned char type;  // as the folder tells it: DT_REG, DT_UNKNOWN ...
};

/// Calls `visit` for each entry until it has enough. Returns 0 or the system's error.
int ReadFolder(const std::string& path, Portion portion,
               const std::function<Reading(const FolderEntry&)>& visit);

/// True for a regular file; a link to one is none.
bool IsRegularFile(const FolderEntry& entry);

}  // namespace ostrel
