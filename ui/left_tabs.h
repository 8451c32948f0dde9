// A tab widget with its tabs down the left side and their captions level. Where the screen is low
// the tabs move together, before they scroll; a page that finds too little room scrolls.
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
  QSize minimumTabSizeHint(int index) const override;
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
};

class LeftTabs : public QTabWidget {
  Q_OBJECT

 public:
  explicit LeftTabs(QWidget* parent);

  void AddPage(QWidget* page, const QString& caption);
  /// Turns to the page that `element` stands on.
  void ShowPageOf(const QWidget* element);

  /// Every tab at its full height, every page at its own size.
  QSize sizeHint() const override;

  /// `step` tabs on from the present one, round the end.
  void Step(int step);
};

}  // namespace ostrel::ui
