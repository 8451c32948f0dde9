// Runs the station ahead in numbers: its turns on the grid of the cycle, the line that drains, the
// pauses and the identifications. So it tells when what waits will be out, if nothing more comes.
#pragma once

#include <cstdint>
#include <optional>

#include "base/time.h"

namespace ostrel {

using std::chrono::nanoseconds;

/// All that the time of the next packets hangs on. Spans count from `now`.
struct Outlook {
  LocalTime now{};
  nanoseconds nextTick{0};
  // The line: a packet, what may still wait at a turn, and the text in front of a pause
  nanoseconds packet{0}, nearlyDrained{0}, pauseText{0};
  nanoseconds waiting{0};     // what the port holds
  nanoseconds blockedFor{0};  // a pause or an identification that is under way
  bool isPausing = false;     // which of them it is
  LocalTime txStart{};
  double upMinutes = 0, downSeconds = 0;  // no pauses without the former
  nanoseconds keyUp{0};
  int countdown = 0, interval = 0;  // minutes to the next identification; none without the latter
  nanoseconds identification{0};
};

class Forecast {
 public:
  explicit Forecast(const Outlook& outlook);

  /// The next file has its turns, with `blocks` still to be sent. Returns when the last of them
  /// will be out, if that is within a week: a station that is set to pause or identify itself all
  /// the time never comes to it.
  std::optional<nanoseconds> Send(std::int64_t blocks);

 private:
  void ReachTurn();
  nanoseconds TickFrom(nanoseconds moment) const;
  bool MeetEvent();
  void CountDown(nanoseconds tick);
  void Pause(nanoseconds tick);
  void Block(nanoseconds until);
  void HaveTurnFirst();
  nanoseconds PauseAfter(LocalTime txStart) const;
  LocalTime WallAt(nanoseconds moment) const;
  nanoseconds SpanTo(LocalTime time) const { return time - outlook_.now; }

  Outlook outlook_;
  nanoseconds grid_;                     // some tick
  nanoseconds turn_;                     // the present turn, or the earliest moment of the next
  nanoseconds lineFree_;                 // all is out that was given to the line
  std::optional<nanoseconds> pauseAt_;   // from then on a tick begins a pause
  std::optional<nanoseconds> countsAt_;  // the second in which the countdown goes down
  int countdown_;
};

}  // namespace ostrel
