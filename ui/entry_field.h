// The field in which a new file name pattern is typed. It starts empty whenever the operator comes
// to it, and the dialog empties it when it is shown; a message box, a menu or another program in
// between does not cost a half-typed pattern.
#pragma once

#include <QLineEdit>

namespace ostrel::ui {

class EntryField : public QLineEdit {
  Q_OBJECT

 public:
  using QLineEdit::QLineEdit;

  /// Takes the focus and is empty, also where it has the focus already.
  void BeginAnew();

 protected:
  void focusInEvent(QFocusEvent* event) override;
};

}  // namespace ostrel::ui
