// A pseudo-terminal: its device end is the serial port under test, the test holds the other one.
#pragma once

#include <array>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <stdexcept>
#include <stdlib.h>
#include <string>
#include <unistd.h>

namespace ostrel {

class PseudoTerminal {
 public:
  PseudoTerminal() : descriptor_(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
    if (descriptor_ < 0 || grantpt(descriptor_) != 0 || unlockpt(descriptor_) != 0) {
      throw std::runtime_error("no pseudo-terminal");
    }
    device_ = ptsname(descriptor_);
  }
  ~PseudoTerminal() { Pull(); }
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  int descriptor() const { return descriptor_; }
  const std::string& device() const { return device_; }

  /// The device vanishes.
  void Pull() {
    if (descriptor_ >= 0) close(descriptor_);
    descriptor_ = -1;
  }

  /// Makes `link` point here, in place of whatever it was.
  void LinkAt(const std::string& link) const {
    std::filesystem::remove(link);
    std::filesystem::create_symlink(device_, link);
  }

  /// What has arrived; waits for the first byte, up to five seconds, when `wait` is set.
  std::string Read(bool wait = true) {
    pollfd ready = {descriptor_, POLLIN, 0};
    if (wait) poll(&ready, 1, 5000);
    std::string bytes;
    std::array<char, 4096> buffer;
    for (ssize_t count; (count = read(descriptor_, buffer.data(), buffer.size())) > 0;) {
      bytes.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return bytes;
  }
  /// Reads on until `count` bytes are there or none has come for five seconds.
  std::string ReadBytes(std::size_t count) {
    std::string bytes;
    while (bytes.size() < count) {
      const std::string more = Read();
      if (more.empty()) break;
      bytes += more;
    }
    return bytes;
  }

 private:
  int descriptor_;
  std::string device_;
};

}  // namespace ostrel
