// Whether a file is still being written by whoever put it there, and the hold on one that is not.
// The system has no exclusive open; a write lease comes nearest, for it is granted only while
// nobody else has the file open.
#pragma once

#include <string>
#include <sys/stat.h>

#include "platform/files.h"
#include "platform/linux/descriptor.h"

namespace ostrel {

enum class LeaseAnswer {
  kGiven,
  kOpenElsewhere,  // some process, or another descriptor of this one, has the file open
  kNone,           // a file of another owner, or a file system that cannot tell of every writer
};

/// Whose open file refuses a lease.
enum class Others {
  kAny,      // somebody who reads, too
  kWriters,  // somebody who writes alone: the history, say, reads what it has received
};

/// Asks for a lease on the open file `descriptor`. Once given it lasts until the descriptor is
/// closed, against those who would write: the station's own reading, and that of others, goes on.
LeaseAnswer TakeLease(int descriptor, Others others);

class LinuxFileHold : public FileHold {
 public:
  /// `file` is open at `path` and stands as `status` tells.
  LinuxFileHold(Descriptor file, std::string path, const struct stat& status, LeaseAnswer lease)
      : file_(std::move(file)), path_(std::move(path)), status_(status), lease_(lease) {}

  bool Delete() override;
  /// Renames the file to `aside`, in its folder. False when what that got is another version that
  /// had come under the file's name, or when somebody is about to write to it: it is back under its
  /// name then, or beside what has come there since. Throws Failure.
  bool MoveAside(const std::string& aside);
  /// Renames what lies at `aside` back. Throws Failure.
  void PutBack(const std::string& aside) const;

 private:
  bool IsAlone(const std::string& path) const;
  bool IsUnwritten() const;
  bool HasMoved() const;
  bool IsHere(const std::string& path) const;

  Descriptor file_;
  std::string path_;
  struct stat status_;
  LeaseAnswer lease_;
};

}  // namespace ostrel
