// A tab widget with its tabs down the left side and their captions level, all of them in sight.
#pragma once

#include <QTabBar>
#include <QTabWidget>

namespace ostrel::ui {

class LeftTabBar : public QTabBar {
  Q_OBJECT

 public:
  explicit LeftTabBar(QWidget* parent);

 protected:
  QSize tabSizeHint(int index) const override;
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
};

class LeftTabs : public QTabWidget {
  Q_OBJECT

 public:
  explicit LeftTabs(QWidget* parent);

  /// `step` tabs on from the present one, round the end.
  void Step(int step);
};

}  // namespace ostrel::ui
