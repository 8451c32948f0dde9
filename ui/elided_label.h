// A label for texts of any length in a place of fixed width: what does not fit is left out of the
// middle, and the tool tip begins with the whole.
#pragma once

#include <QLabel>

namespace ostrel::ui {

class ElidedLabel : public QLabel {
  Q_OBJECT

 public:
  using QLabel::QLabel;

  QSize minimumSizeHint() const override;

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  QString Shown() const;
};

}  // namespace ostrel::ui
