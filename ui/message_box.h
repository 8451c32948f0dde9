// A message of the station in a box of its own. No other window is locked by it: the station goes
// on whether it is answered now, tomorrow or never.
#pragma once

#include <QMessageBox>
#include <functional>

#include "platform/dialogs.h"

namespace ostrel::ui {

class MessageBox : public QMessageBox {
  Q_OBJECT

 public:
  /// Stays above `owner`, if there is one. Deletes itself when it has been closed, which calls
  /// `answered`.
  MessageBox(const Message& message, std::function<void(MessageAnswer)> answered, QWidget* owner);

  /// True while the message is on the screen and not closed.
  bool Shows(const Message& message) const;

  /// The owner is active again before the box is gone. A third window that became active in between
  /// would pass for one that the operator went to.
  void setVisible(bool visible) override;

 private:
  void MakeRoomForTitle();

  Message message_;
};

}  // namespace ostrel::ui
