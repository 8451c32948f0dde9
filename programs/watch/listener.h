// Keeps asking a station how it stands, and hears when it is about to be silent. Two connections:
// an answer that does not come must not hide an announcement.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "client/station_client.h"
#include "programs/watch/watchdog.h"

namespace ostrel {

class Listener {
 public:
  Listener(std::string socketPath, Watchdog& watchdog)
      : path_(std::move(socketPath)), watchdog_(watchdog) {}

  /// Waits up to `limit` for what the station says, tells the watchdog, and asks again.
  void Listen(milliseconds limit);
  /// Forgets a station that ended.
  void Reset();

  /// The last answer to "status"; empty before the first.
  const std::string& status() const { return status_; }

 private:
  void Ask();
  void Hear();

  std::string path_;
  Watchdog& watchdog_;
  std::unique_ptr<StationClient> statusAsker_, silenceAsker_;
  bool isAsked_ = false;
  milliseconds nextQuestion_{0};
  std::string status_;
};

/// The steady clock.
milliseconds SteadyNow();

}  // namespace ostrel
