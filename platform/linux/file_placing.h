// How the content of an open file gets a place in a folder: by a second name, by a copy, or by a
// move of the file itself. Each makes a hidden name first and renames it: nobody sees half a file,
// and a file at the destination is replaced whole.
#pragma once

#include <functional>
#include <string>
#include <sys/stat.h>

#include "base/time.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/temporary_file.h"

namespace ostrel {

/// A regular file that is to get a place, open for reading.
struct PlacedSource {
  const Descriptor& file;
  const struct stat& status;  // as it was when it was opened
  const std::string& path;
};

/// True when the file may get a second name in `folder`: both lie on one file system that has such
/// names, nobody unknown can write into the file, and this account may stamp it.
bool MayHaveSecondName(const PlacedSource& source, const std::string& folder);

/// Stamps the file with `time` and gives it the further name `destination`. Returns 0
/// or the system's error; EBUSY when another file stands at its path by now.
int GiveSecondName(const PlacedSource& source, const std::string& destination, UtcTime time);

/// Renames the file to `destination`, on the same file system, and stamps it where it may. Returns
/// 0 or the system's error.
int MoveFileItself(const PlacedSource& source, const std::string& destination, UtcTime time);

/// Reads the file to its end into `copy`, sharing blocks where the file system can. `goOn` is
/// called between pieces of a megabyte and may throw. Returns a copy code; kInUse when the file
/// changed meanwhile.
int CopyContent(const PlacedSource& source, TemporaryFile& copy, const std::function<void()>& goOn);

}  // namespace ostrel
