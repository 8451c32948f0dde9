// What the last 24 hours were like: how much waited, what came, what went out, and for how long the
// station was off the air, in stretches of five minutes. It goes by the monotonic clock, so a step
// of the wall clock neither tears nor doubles anything, and it begins anew with each start.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>

#include "base/priority.h"
#include "base/time.h"

namespace ostrel {

class LastDay {
 public:
  static constexpr milliseconds kStretch{300'000};
  /// Those of 24 hours, and the present one.
  static constexpr std::size_t kMostStretches =
      static_cast<std::size_t>(std::chrono::hours(24) / kStretch) + 1;
  /// The least urgent priority whose bytes count as urgent.
  static constexpr Priority kUrgent{3};

  struct Waiting {
    std::int64_t urgent = 0, others = 0;  // bytes
  };
  /// Since some fixed moment.
  struct Totals {
    int arrived = 0, sent = 0;
    milliseconds offAir{0};
  };
  struct Stretch {
    Waiting most;
    Totals within;
  };

  /// How things stand at the monotonic time `now`: once a minute or more often. What the totals
  /// have grown by belongs to the stretch of the look before.
  void Note(milliseconds now, const Waiting& waiting, const Totals& totals);

  /// Oldest first, the present one last; nothing for one in which nobody looked.
  const std::deque<std::optional<Stretch>>& stretches() const { return stretches_; }
  /// When the present one began, monotonic.
  milliseconds begun() const { return begun_; }

 private:
  void Add(const Totals& totals);
  void MoveOnTo(milliseconds now);

  std::deque<std::optional<Stretch>> stretches_;
  milliseconds begun_{0};
  Totals totals_;
};

}  // namespace ostrel
