// Shows the latest failure, stamped with the time it arrived, and lets the operator have no more of
// them.
#pragma once

#include <QDialog>
#include <QPlainTextEdit>
#include <QSet>

#include "platform/clock.h"
#include "state/setup_fields.h"
#include "station/actions.h"

namespace ostrel::ui {

/// Whether a message has been in this window before.
enum class ErrorNews { kNew, kKnown };

class ErrorWindow : public QDialog {
  Q_OBJECT

 public:
  ErrorWindow(const Clock& clock, SetupFields& setup, Actions& actions, QWidget* parent);

  /// Shows the message with the present time. Known is what has come since the window was opened,
  /// the line aside that tells when the failure was: a failure that lasts comes at every tick.
  ErrorNews SetMessage(const QString& text);

 private:
  void Display();

  const Clock& clock_;
  QPlainTextEdit* txtError_;  // hidden: the message as it came
  QPlainTextEdit* txtDisplay_;
  QSet<QString> known_;
};

}  // namespace ostrel::ui
