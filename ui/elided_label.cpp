#include "ui/elided_label.h"

#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

#include "ui/looks.h"

namespace ostrel::ui {

QSize ElidedLabel::minimumSizeHint() const {
  return {0, QLabel::minimumSizeHint().height()};
}

QString ElidedLabel::Shown() const {
  return fontMetrics().elidedText(text(), Qt::ElideMiddle, contentsRect().width() - 2 * margin());
}

bool ElidedLabel::event(QEvent* event) {
  if (event->type() == QEvent::ToolTip && Shown() != text()) {
    const QString whole = toolTip().isEmpty() ? text() : text() + '\n' + toolTip();
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), PlainToolTip(whole), this);
    return true;
  }
  return QLabel::event(event);
}

void ElidedLabel::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  drawFrame(&painter);
  const int space = margin();
  painter.setPen(palette().color(foregroundRole()));
  painter.drawText(contentsRect().adjusted(space, 0, -space, 0),
                   static_cast<int>(alignment()) | Qt::TextSingleLine, Shown());
}

}  // namespace ostrel::ui
