#include "station/last_day.h"

#include <algorithm>

namespace ostrel {

void LastDay::Note(milliseconds now, const Waiting& waiting, const Totals& totals) {
  if (stretches_.empty()) {
    begun_ = now;
    stretches_.emplace_back(Stretch{});
  } else {
    Add(totals);
  }
  totals_ = totals;
  MoveOnTo(now);
  auto& present = stretches_.back();
  if (!present) present.emplace();
  present->most.urgent = std::max(present->most.urgent, waiting.urgent);
  present->most.others = std::max(present->most.others, waiting.others);
}

/// A station that was kept from looking, by a disk say, cannot have been off the air for longer
/// than the stretch is.
void LastDay::Add(const Totals& totals) {
  auto& within = stretches_.back()->within;
  within.arrived += totals.arrived - totals_.arrived;
  within.sent += totals.sent - totals_.sent;
  within.offAir = std::min(within.offAir + totals.offAir - totals_.offAir, kStretch);
}

void LastDay::MoveOnTo(milliseconds now) {
  for (; now - begun_ >= kStretch; begun_ += kStretch) {
    stretches_.emplace_back();
    if (stretches_.size() > kMostStretches) stretches_.pop_front();
  }
}

}  // namespace ostrel
