#include "ui/activity_light.h"

#include <QPainter>

#include "ui/looks.h"

namespace ostrel::ui {
namespace {

constexpr int kSide = 8;

}  // namespace

QPixmap LightPicture(Light light, qreal pixelRatio) {
  if (light == Light::kNone) return {};
  QPixmap picture(QSize(kSide, kSide) * pixelRatio);
  picture.setDevicePixelRatio(pixelRatio);
  picture.fill(kLightGrey);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(Qt::black, 1));
  painter.setBrush(light == Light::kRed ? kRed : kYellow);
  painter.drawEllipse(QRectF(0.5, 0.5, kSide - 1, kSide - 1));
  return picture;
}

}  // namespace ostrel::ui
