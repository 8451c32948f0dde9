#include "ui/screen_place.h"

#include <algorithm>

namespace ostrel::ui {
namespace {

constexpr QSize kGrip(80, 20);  // of the title: enough for the mouse

bool CanBeTaken(const QRect& place, const QRect& room) {
  const QRect grip = QRect(place.topLeft(), QSize(place.width(), kGrip.height())) & room;
  return grip.height() == kGrip.height() && grip.width() >= std::min(kGrip.width(), place.width());
}

int Area(const QRect& rect) {
  return rect.width() * rect.height();
}

}  // namespace

QRect Within(QRect place, const QRect& room) {
  place.setSize(place.size().boundedTo(room.size()));
  place.moveLeft(std::clamp(place.left(), room.left(), room.right() - place.width() + 1));
  place.moveTop(std::clamp(place.top(), room.top(), room.bottom() - place.height() + 1));
  return place;
}

QRect Beside(const QRect& other, QSize size, const QRect& room) {
  QRect place(other.topLeft(), size);
  if (other.right() + size.width() <= room.right()) {
    place.moveLeft(other.right() + 1);
  } else if (other.left() - size.width() >= room.left()) {
    place.moveRight(other.left() - 1);
  } else {
    place.moveCenter(other.center());
  }
  return Within(place, room);
}

QRect InReach(const QRect& place, const QList<QRect>& rooms) {
  const auto reaches = [&](const QRect& room) { return CanBeTaken(place, room); };
  if (rooms.isEmpty() || std::any_of(rooms.begin(), rooms.end(), reaches)) return place;
  const auto shown = [&](const QRect& room) { return Area(place & room); };
  return Within(place,
                *std::max_element(rooms.begin(), rooms.end(), [&](const QRect& a, const QRect& b) {
                  return shown(a) < shown(b);
                }));
}

}  // namespace ostrel::ui
