// Decides from what a station answered, and when, whether it hangs. Times are of one steady clock.
#pragma once

#include <chrono>
#include <deque>

namespace ostrel {

using std::chrono::milliseconds;
using std::chrono::seconds;

/// How long a station is waited for.
struct Patience {
  milliseconds answer{10'000};  // for an answer, beyond what the station announced
  milliseconds start{120'000};  // for the first one after it was started
  int startsAnHour = 6;
};

class Watchdog {
 public:
  explicit Watchdog(Patience patience) : patience_(patience) {}

  /// The program was started.
  void Started(milliseconds now);
  void Answered(milliseconds now) { lastSign_ = now + patience_.answer; }
  /// The station said that it answers nobody for `length` from now on.
  void Silent(milliseconds now, milliseconds length) {
    lastSign_ = now + length + patience_.answer;
  }

  /// True when no answer came for longer than what it is doing can take.
  bool Hangs(milliseconds now) const { return now > lastSign_; }
  /// When it may be started again: at once, unless it was often enough in the last hour.
  milliseconds NextStart(milliseconds now) const;

 private:
  Patience patience_;
  milliseconds lastSign_{0};  // until when it may be silent
  std::deque<milliseconds> starts_;
};

}  // namespace ostrel
