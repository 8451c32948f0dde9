#include "platform/virtual/virtual_loop.h"

#include <algorithm>

#include "base/failure.h"

namespace ostrel {

VirtualTimer::VirtualTimer(VirtualLoop& loop) : loop_(loop) {
  loop.timers_.push_back(this);
}

void VirtualTimer::Start(milliseconds interval) {
  interval_ = interval;
  due_ = loop_.clock_.Monotonic() + interval;
  isRunning_ = true;
}

void VirtualTimer::Fire() {
  const auto began = loop_.clock_.Monotonic();
  // Firings that a busy thread missed are not made up for.
  due_ += interval_ * ((began - due_) / interval_ + 1);
  call_();
}

void VirtualLoop::ProcessPendingEvents() {
  while (RunOperatorAction()) {
  }
  for (auto* timer : timers_) {
    if (timer->isRunning_ && timer->due_ <= clock_.Monotonic()) timer->Fire();
  }
  if (clock_.EndsWaits()) throw StopRequested();
}

bool VirtualLoop::RunOperatorAction() {
  if (operator_.empty() || operator_.begin()->first > clock_.Monotonic()) return false;
  const auto action = std::move(operator_.begin()->second);
  operator_.erase(operator_.begin());
  action();
  return true;
}

bool VirtualLoop::RunNext(milliseconds end) {
  VirtualTimer* first = nullptr;
  for (auto* timer : timers_) {
    if (timer->isRunning_ && (!first || timer->due_ < first->due_)) first = timer;
  }
  auto next = end;
  if (first) next = std::min(next, first->due_);
  if (!operator_.empty()) next = std::min(next, operator_.begin()->first);
  clock_.Advance(std::max(next - clock_.Monotonic(), milliseconds(0)));
  if (RunOperatorAction()) return true;
  if (!first || !first->isRunning_ || first->due_ > clock_.Monotonic()) return false;
  first->Fire();
  return true;
}

void VirtualLoop::RunFor(milliseconds duration) {
  const auto end = clock_.Monotonic() + duration;
  while (clock_.Monotonic() <= end && (RunNext(end) || clock_.Monotonic() < end)) {
  }
}

bool VirtualLoop::RunUntil(const std::function<bool()>& done, milliseconds limit) {
  const auto end = clock_.Monotonic() + limit;
  while (!done()) {
    if (!RunNext(end) && clock_.Monotonic() >= end) return done();
  }
  return true;
}

}  // namespace ostrel
