#include "platform/qt/qt_event_loop.h"

#include <QCoreApplication>

#include "base/failure.h"

namespace ostrel {

void QtEventLoop::ProcessPendingEvents() {
  QCoreApplication::processEvents();
  if (StopIsRequested() && !shuttingDown_) throw StopRequested{};
}

void QtEventLoop::RequestStop() {
  stop_.RequestStop();
}

bool QtEventLoop::StopIsRequested() const {
  return stop_.IsRequested();
}

void QtEventLoop::BeginShutdown() {
  shuttingDown_ = true;
  stop_.BeginShutdown();
}

}  // namespace ostrel
