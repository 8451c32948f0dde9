// One road on which packets leave the station. Another road is another class, and a line where the
// station is wired.
#pragma once

#include <string>

namespace ostrel {

class Output {
 public:
  virtual ~Output() = default;

  /// Takes one packet. Throws Failure; the packet does not come again.
  virtual void Send(const std::string& packet) = 0;

  /// The end of start-up. Throws Failure when the road cannot be opened, which ends start-up.
  virtual void Begin() {}
  /// The end of the program. Throws Failure.
  virtual void End() {}
};

}  // namespace ostrel
