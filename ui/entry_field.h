// The field in which a new file name pattern is typed. It starts empty whenever the operator comes
// to it; a message box, a menu or another program in between does not cost a half-typed pattern.
#pragma once

#include <QLineEdit>

namespace ostrel::ui {

class EntryField : public QLineEdit {
  Q_OBJECT

 public:
  using QLineEdit::QLineEdit;

 protected:
  void focusInEvent(QFocusEvent* event) override;
};

}  // namespace ostrel::ui
