#include "platform/qt/qt_timer.h"

namespace ostrel {

// A coarse timer may be 5 % off, which would lose a packet's turn now and then.
QtTimer::QtTimer() {
  timer_.setTimerType(Qt::PreciseTimer);
}

void QtTimer::OnTick(std::function<void()> call) {
  QObject::connect(&timer_, &QTimer::timeout, &timer_, std::move(call));
}

void QtTimer::Start(milliseconds interval) {
  timer_.start(interval);
}

void QtTimer::Stop() {
  timer_.stop();
}

bool QtTimer::IsRunning() const {
  return timer_.isActive();
}

}  // namespace ostrel
