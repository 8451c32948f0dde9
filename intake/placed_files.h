// Files that have been placed where they belong but could not be deleted from the folder they came
// from. They are only deleted from then on, never taken a second time.
#pragma once

#include <map>
#include <string>

#include "platform/files.h"

namespace ostrel {

class PlacedFiles {
 public:
  explicit PlacedFiles(Files& files) : files_(files) {}

  /// Deletes a file that has just been placed. When that fails the file is remembered, and the
  /// Failure thrown.
  void Delete(const std::string& path);
  /// True when exactly this file (path, size, time) was placed before.
  bool Contains(const std::string& path);

 private:
  Files& files_;
  std::map<std::string, FileStatus> marks_;
};

}  // namespace ostrel
