// Standard input, output and error as a program finds them.
#pragma once

#include <fcntl.h>
#include <unistd.h>

namespace ostrel {

/// Gives those that the starter has closed to the null device: else the next file to be opened, the
/// lock or the port, would take every message that is meant for standard error.
inline void FillStandardStreams() {
  int file;
  do {
    file = open("/dev/null", O_RDWR);
  } while (file >= 0 && file <= STDERR_FILENO);
  if (file >= 0) close(file);
}

}  // namespace ostrel
