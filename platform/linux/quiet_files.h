// Where the system cannot tell who has a file open: files that have stood as they are for a while.
// The times of the files themselves would not do, for a server's clock may run ahead of the
// station's or behind it.
#pragma once

#include <map>
#include <string>
#include <sys/stat.h>

#include "base/time.h"

namespace ostrel {

/// For so long a file must have had the same size and last-write time.
inline constexpr seconds kQuietTime{10};

class QuietFiles {
 public:
  /// True when the file at `path`, which stands as `status` tells, has been seen like this
  /// kQuietTime or more before `now`, which is monotonic. Looks at the files
  /// around it too when it is new, so that not each of many waits after the other.
  bool IsQuiet(const std::string& path, const struct stat& status, milliseconds now);
  /// The station has just made the file at `path`, whole: it need not stand still first.
  void NoteOwn(const std::string& path, milliseconds now);

 private:
  struct Look {
    struct stat status;
    milliseconds since;
  };

  void LookAround(const std::string& folder, milliseconds now);

  std::map<std::string, Look> looks_;  // by path: some systems give a file another inode each time
};

}  // namespace ostrel
