// The program under watch.
#pragma once

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace ostrel {

class Child {
 public:
  /// Starts `command`. Throws std::runtime_error when it cannot be started.
  explicit Child(const std::vector<std::string>& command);
  ~Child();
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  /// How it ended, as wait tells it; nothing while it runs.
  std::optional<int> Ended();
  void Signal(int signal) const;
  /// Ends it for good: the kernel closes its port, and the keying lines drop.
  void Kill();

 private:
  pid_t process_;
  std::optional<int> status_;
};

}  // namespace ostrel
