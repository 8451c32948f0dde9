#include "programs/headless/plain_dialogs.h"

#include <QCoreApplication>

namespace ostrel {

// Queued, so that it also ends a program whose event loop has yet to begin.
void PlainDialogs::EndProgram() {
  QMetaObject::invokeMethod(
      qApp, [] { QCoreApplication::exit(0); }, Qt::QueuedConnection);
}

}  // namespace ostrel
