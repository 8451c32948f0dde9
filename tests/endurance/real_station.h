// The real program, without a display, in a folder of its own, on a line whose other end the test
// holds.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

#include "tests/support/pseudo_terminal.h"
#include "tests/support/temp_folder.h"

namespace ostrel {

using namespace std::chrono_literals;

/// One line of the keying record; see the shim.
struct Keying {
  std::chrono::microseconds at;  // monotonic
  std::string event;
  bool line1, line2;
  bool dropsAtClose;
};

class RealStation {
 public:
  using Settings = std::vector<std::pair<std::string, std::string>>;

  /// A fast line, no identification, no pause, no delay and no error windows, but for what
  /// `settings` say.
  explicit RealStation(const Settings& settings = {});
  ~RealStation();

  void Rule(int list, const std::string& keyword);
  /// A product appears in the ingest folder, whole and at once.
  void Drop(const std::string& name, const std::string& content);

  /// Starts the program. Its wall clock goes ahead of the real one by `ahead`.
  void Start(std::chrono::seconds ahead = 0s);
  void Signal(int number);
  /// The status as waitpid gives it, once the program has ended; it is waited for.
  std::optional<int> WaitForEnd(std::chrono::milliseconds longest);

  /// The station's line goes to `terminal` from the next opening on.
  void LinkLine(const PseudoTerminal& terminal) { terminal.LinkAt(Path("ports/COM1")); }
  std::vector<Keying> KeyingRecord();
  std::string Log();
  std::string Path(const std::string& name) const { return folder_ / name; }

 private:
  TempFolder folder_;
  pid_t process_ = 0;
};

/// Asks `done` again and again until it says yes; false when `longest` passes first.
template <typename Done>
bool WaitUntil(std::chrono::milliseconds longest, Done&& done) {
  const auto end = std::chrono::steady_clock::now() + longest;
  while (!done()) {
    if (std::chrono::steady_clock::now() > end) return false;
    poll(nullptr, 0, 10);
  }
  return true;
}

}  // namespace ostrel
