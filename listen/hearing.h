// How well the station is heard: when last, and what was lost.
#pragma once

#include <chrono>
#include <deque>
#include <mutex>
#include <optional>

namespace ostrel {

/// For any number of threads. Times are those of a steady clock.
class Hearing {
 public:
  using Time = std::chrono::steady_clock::time_point;
  struct Figures {
    std::optional<std::chrono::seconds> sinceHeard;  // nothing before the first packet
    std::chrono::seconds sinceStart{};
    int heard = 0, lost = 0;  // blocks of the last hour
  };

  explicit Hearing(Time start) : start_(start) {}

  void Heard(Time now);
  /// Blocks that came damaged or never came.
  void Lost(int blocks, Time now);
  Figures At(Time now) const;

 private:
  struct Minute {
    Time begun;
    int heard = 0, lost = 0;
  };
  Minute& MinuteOf(Time now);

  mutable std::mutex mutex_;
  Time start_;
  std::optional<Time> lastHeard_;
  std::deque<Minute> minutes_;  // of the last hour, the newest last
};

}  // namespace ostrel
