// A label for texts of any length in a place of fixed width: what does not fit is left out of the
// middle, and the tool tip begins with the whole.
#pragma once

#include <QLabel>
#include <functional>

namespace ostrel::ui {

class ElidedLabel : public QLabel {
  Q_OBJECT

 public:
  using QLabel::QLabel;

  /// What the tool tip says besides, asked for when it comes up; nothing when empty.
  void SetRemark(std::function<QString()> remark) { remark_ = std::move(remark); }

  QSize minimumSizeHint() const override;

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  QString Shown() const;
  QString TipText() const;

  std::function<QString()> remark_;
};

}  // namespace ostrel::ui
