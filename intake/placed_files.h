// Files that have been placed where they belong but could not be deleted from the folder they came
// from. They are only deleted from then on, never taken a second time.
#pragma once

#include <functional>
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
  /// The same for a file that is held. False when it stays because somebody else is at it: then it
  /// is not remembered, for it will be another one.
  bool Delete(const std::string& path, FileHold& hold);
  /// What was made of it is given up: it is to be taken again.
  void Forget(const std::string& path) { marks_.erase(path); }
  /// True when exactly this file (path, size, time) was placed before.
  bool Contains(const std::string& path);

 private:
  bool DeleteBy(const std::function<bool()>& step, const std::string& path);

  Files& files_;
  std::map<std::string, FileStatus> marks_;
};

}  // namespace ostrel
