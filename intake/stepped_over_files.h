// Files of the holding folders that could not be taken for a reason of their own, such as their
// permissions. They are passed over for a while, longer after each failure, and hold up nobody.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "platform/clock.h"
#include "platform/files.h"

namespace ostrel {

class SteppedOverFiles {
 public:
  SteppedOverFiles(Files& files, Clock& clock) : files_(files), clock_(clock) {}

  /// Which files of the name wait.
  enum class Versions {
    kThisOne,  // another one in its place does not
    kAll,      // it changes all the time, as somebody writes into it
  };
  /// The file at `path` failed: passed over for ten seconds, twice as long at each further failure,
  /// eleven minutes at most.
  void StepOver(const std::string& path, Versions versions = Versions::kThisOne);
  /// When the file is tried again, monotonic; nothing for one that is not passed over.
  std::optional<milliseconds> NextTry(const std::string& path) const;
  /// True while the file waits.
  bool IsPassedOver(const std::string& folder, const std::string& name) const;

 private:
  struct Wait {
    FileStatus file;
    milliseconds length;
    milliseconds end;  // monotonic
    Versions versions;
  };
  FileStatus StatusOf(const std::string& path) const;

  Files& files_;
  Clock& clock_;
  std::map<std::string, Wait> waits_;
};

}  // namespace ostrel
