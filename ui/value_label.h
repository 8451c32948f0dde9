// A label that the mouse works on: it tells of a press, a release and a click, whichever button,
// and takes a fast second press as the press that it is.
#pragma once

#include <QLabel>

#include "station/actions.h"

namespace ostrel::ui {

class ValueLabel : public QLabel {
  Q_OBJECT

 public:
  using QLabel::QLabel;

 signals:
  void Pressed(Button button);
  /// Wherever the pointer is by then.
  void Released(Button button);
  /// Pressed and released on the label.
  void Clicked(Button button);

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
};

}  // namespace ostrel::ui
