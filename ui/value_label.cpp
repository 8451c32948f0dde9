#include "ui/value_label.h"

#include <QMouseEvent>

namespace ostrel::ui {
namespace {

Button ButtonOf(const QMouseEvent* event) {
  return event->button() == Qt::LeftButton ? Button::kLeft : Button::kOther;
}

}  // namespace

void ValueLabel::mousePressEvent(QMouseEvent* event) {
  emit Pressed(ButtonOf(event));
}

void ValueLabel::mouseReleaseEvent(QMouseEvent* event) {
  emit Released(ButtonOf(event));
  if (rect().contains(event->pos())) emit Clicked(ButtonOf(event));
}

void ValueLabel::mouseDoubleClickEvent(QMouseEvent* event) {
  mousePressEvent(event);
}

}  // namespace ostrel::ui
