// The real program, without a display, in a folder of its own, on a line whose other end the test
// holds and listens to.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <signal.h>
#include <sys/types.h>

#include "tests/endurance/delivery.h"
#include "tests/support/pseudo_terminal.h"

namespace ostrel {

/// What the shim noted of the keying lines.
struct Keying {
  std::string steps;                  // RTS and DTR after each change, as "11 01 "
  std::chrono::microseconds last{0};  // when the last one was, monotonic
  bool dropsAtClose = false;
};

class RealStation {
 public:
  /// Many rules and settings, no waits and no error windows, but for what `settings` say.
  explicit RealStation(const std::map<std::string, std::string>& settings = {});
  ~RealStation();

  /// A product appears in the ingest folder, whole and at once.
  void Drop(const std::string& name, const std::string& content);
  std::unique_ptr<SettingsStore> OpenSettings();

  /// Starts the program, at the second `second` of a minute by its own wall clock.
  void Start(int second = 0);
  /// Sends the signal. The status as waitpid gives it, or -1 when the program goes on.
  int End(int signal);
  /// Sends the signal to the program, or to the guard that it has started.
  void Signal(int signal) { kill(process_, signal); }
  void SignalGuard(int signal);
  /// Another device takes the place of the one that was the line.
  void Replug();
  /// Until `done` says yes; false when `longest` passes first.
  bool ListenUntil(std::chrono::milliseconds longest, const std::function<bool()>& done);

  Keying KeyingRecord();
  std::string Log();
  std::string Path(const std::string& name) const { return folder_ / name; }

  std::optional<PseudoTerminal> line;
  std::string heard;
  Delivery delivery;

 private:
  TemporaryFolder folder_;
  pid_t process_ = 0;
};

}  // namespace ostrel
