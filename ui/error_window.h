// Shows the latest failure, stamped with the time it arrived.
#pragma once

#include <QDialog>
#include <QPlainTextEdit>

#include "platform/clock.h"

namespace ostrel::ui {

class ErrorWindow : public QDialog {
  Q_OBJECT

 public:
  ErrorWindow(const Clock& clock, QWidget* parent);

  /// A text that the window already holds does not count as a new message.
  void SetMessage(const QString& text);

 private:
  void Display();

  const Clock& clock_;
  QPlainTextEdit* txtError_;  // hidden: the message as it came
  QPlainTextEdit* txtDisplay_;
};

}  // namespace ostrel::ui
