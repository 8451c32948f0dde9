// A file of a receiver's tree: how it stands, and what its mark is made of.
#pragma once

#include <optional>
#include <string>
#include <sys/stat.h>

#include "base/failure.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/held_alone.h"

namespace ostrel {

/// Size and time, for a Mark.
std::string StateOf(const struct stat& status);

/// Of a file that has something in it; nothing for all else, links too, and for what cannot be
/// looked at: the next look will see.
std::optional<struct stat> StatusOf(const std::string& path);

/// An open file, how it stood when it was opened, and whether it is anybody else's.
struct OpenedFile {
  Descriptor file;
  struct stat status;
  LeaseAnswer lease;
};

/// That a file cannot be read is its own trouble, and no other one's.
struct UnreadableFile : Failure {
  using Failure::Failure;
};

/// Both throw UnreadableFile.
OpenedFile OpenFileOf(const std::string& path);
std::string ContentOf(const OpenedFile& opened, const std::string& path);

}  // namespace ostrel
