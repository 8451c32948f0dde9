#include "platform/qt/qt_event_loop.h"

#include <QCoreApplication>

#include "base/failure.h"

namespace ostrel {

void QtEventLoop::ProcessPendingEvents() {
  QCoreApplication::processEvents();
  if (stop_.EndsWaits()) throw StopRequested{};
}

void QtEventLoop::RequestStop() {
  stop_.RequestStop();
}

bool QtEventLoop::StopIsRequested() const {
  return stop_.IsRequested();
}

void QtEventLoop::BeginShutdown() {
  stop_.BeginShutdown();
}

}  // namespace ostrel
