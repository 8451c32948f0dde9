// A pseudo-terminal: its device end is the serial port under test, the test holds the other one.
#pragma once

#include <array>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <stdexcept>
#include <stdlib.h>
#include <string>

#include "platform/linux/descriptor.h"

namespace ostrel {

class PseudoTerminal {
 public:
  PseudoTerminal() {
    if (unlockpt(descriptor()) != 0) throw std::runtime_error("no pseudo-terminal");
  }

  int descriptor() const { return ours_.Get(); }
  /// The device vanishes.
  void Pull() { ours_.Reset(); }
  /// Makes `link` point here, in place of whatever it was.
  void LinkAt(const std::string& link) const {
    std::filesystem::remove(link);
    std::filesystem::create_symlink(ptsname(descriptor()), link);
  }
  /// What has arrived; waits until that is `least` bytes or none has come for five seconds.
  std::string Read(std::size_t least = 0) {
    std::string bytes;
    std::array<char, 4096> buffer;
    pollfd ready = {descriptor(), POLLIN, 0};
    do {
      for (ssize_t count; (count = read(descriptor(), buffer.data(), buffer.size())) > 0;) {
        bytes.append(buffer.data(), static_cast<std::size_t>(count));
      }
    } while (bytes.size() < least && poll(&ready, 1, 5000) > 0 && (ready.revents & POLLIN) != 0);
    return bytes;
  }

 private:
  Descriptor ours_{posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)};
};

}  // namespace ostrel
