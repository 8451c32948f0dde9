#include "ui/left_tabs.h"

#include <QKeyEvent>
#include <QScrollArea>
#include <QStyleOptionFocusRect>
#include <QStyleOptionTab>
#include <QStylePainter>

namespace ostrel::ui {
namespace {

constexpr int kTextIndent = 10;
constexpr int kFocusInset = 3;
constexpr int kMarkWidth = 4;   // on the chosen tab, whatever the palette
constexpr int kLeastSpace = 2;  // around the text of a tab, where the screen is low

void PaintTab(QStylePainter& painter, const QStyleOptionTab& option, bool focused) {
  painter.drawControl(QStyle::CE_TabBarTabShape, option);
  painter.drawItemText(option.rect.adjusted(kTextIndent, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter,
                       option.palette, true, option.text, QPalette::WindowText);
  if ((option.state & QStyle::State_Selected) != 0) {
    auto mark = option.rect;
    mark.setWidth(kMarkWidth);
    painter.fillRect(mark, option.palette.highlight());
  }
  if (!focused) return;
  QStyleOptionFocusRect frame;
  frame.initFrom(painter.device() != nullptr ? static_cast<QWidget*>(painter.device()) : nullptr);
  frame.rect = option.rect.adjusted(kFocusInset, kFocusInset, -kFocusInset, -kFocusInset);
  painter.drawPrimitive(QStyle::PE_FrameFocusRect, frame);
}

/// A page at the size that it asks for, and a view of it where there is less room.
class PageView : public QScrollArea {
 public:
  PageView(QWidget* page, QWidget* parent) : QScrollArea(parent) {
    setFrameShape(NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setWidgetResizable(true);
    setWidget(page);
    for (QWidget* const ground : {page, viewport()}) ground->setAutoFillBackground(false);
  }

  QSize sizeHint() const override { return widget()->minimumSizeHint(); }
};

}  // namespace

LeftTabBar::LeftTabBar(QWidget* parent) : QTabBar(parent) {
  setUsesScrollButtons(true);
  setElideMode(Qt::ElideNone);
}

// The bar makes room for captions that stand upright.
QSize LeftTabBar::tabSizeHint(int index) const {
  return QTabBar::tabSizeHint(index).transposed();
}

QSize LeftTabBar::minimumTabSizeHint(int index) const {
  return {tabSizeHint(index).width(), fontMetrics().height() + kLeastSpace};
}

void LeftTabBar::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Up || event->key() == Qt::Key_Down) {
    const int next = currentIndex() + (event->key() == Qt::Key_Up ? -1 : 1);
    if (next >= 0 && next < count()) setCurrentIndex(next);
  } else {
    QTabBar::keyPressEvent(event);
  }
}

void LeftTabBar::paintEvent(QPaintEvent* /*event*/) {
  QStylePainter painter(this);
  const auto paint = [&](int index, bool focused) {
    QStyleOptionTab option;
    initStyleOption(&option, index);
    PaintTab(painter, option, focused);
  };
  for (int i = 0; i < count(); ++i) {
    if (i != currentIndex()) paint(i, false);
  }
  if (currentIndex() >= 0) paint(currentIndex(), hasFocus());
}

LeftTabs::LeftTabs(QWidget* parent) : QTabWidget(parent) {
  setTabBar(new LeftTabBar(this));
  setTabPosition(West);
}

void LeftTabs::AddPage(QWidget* page, const QString& caption) {
  addTab(new PageView(page, this), caption);
}

void LeftTabs::ShowPageOf(const QWidget* element) {
  for (int i = 0; i < count(); ++i) {
    if (widget(i)->isAncestorOf(element)) setCurrentIndex(i);
  }
}

QSize LeftTabs::sizeHint() const {
  return QTabWidget::sizeHint().expandedTo({0, tabBar()->sizeHint().height()});
}

void LeftTabs::Step(int step) {
  setCurrentIndex((currentIndex() + step + count()) % count());
}

}  // namespace ostrel::ui
