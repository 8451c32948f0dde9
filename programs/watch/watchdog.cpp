#include "programs/watch/watchdog.h"

#include <algorithm>

namespace ostrel {

namespace {
constexpr std::chrono::hours kHour{1};
}

void Watchdog::Started(milliseconds now) {
  lastSign_ = now + patience_.start;
  starts_.push_back(now);
  if (starts_.size() > static_cast<std::size_t>(patience_.startsAnHour)) starts_.pop_front();
}

milliseconds Watchdog::NextStart(milliseconds now) const {
  const bool isOften = starts_.size() == static_cast<std::size_t>(patience_.startsAnHour);
  return isOften ? std::max(now, starts_.front() + kHour) : now;
}

}  // namespace ostrel
