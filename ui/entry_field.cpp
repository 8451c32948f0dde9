#include "ui/entry_field.h"

#include <QFocusEvent>

namespace ostrel::ui {

void EntryField::BeginAnew() {
  clear();
  setFocus();
}

void EntryField::focusInEvent(QFocusEvent* event) {
  switch (event->reason()) {
    case Qt::ActiveWindowFocusReason:
    case Qt::PopupFocusReason:
    case Qt::MenuBarFocusReason:
      break;
    default:
      clear();
  }
  QLineEdit::focusInEvent(event);
}

}  // namespace ostrel::ui
