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

QString ElidedLabel::TipText() const {
  QStringList lines;
  if (Shown() != text()) lines << text();
  lines << toolTip();
  if (remark_) lines << remark_();
  lines.removeAll(QString());
  return lines.join('\n');
}

bool ElidedLabel::event(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QLabel::event(event);
  QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), PlainToolTip(TipText()), this);
  return true;
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
