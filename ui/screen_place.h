// Where a window goes on a screen, so that nothing of it is out of reach.
#pragma once

#include <QList>
#include <QRect>

namespace ostrel::ui {

/// `place` moved, and made smaller where it must be, until it lies in `room`.
QRect Within(QRect place, const QRect& room);

/// The place for a window of `size`: to the right of `other`, to its left, or where neither has the
/// room, over its middle. Always in `room`.
QRect Beside(const QRect& other, QSize size, const QRect& room);

/// `place` if a window there can be taken by its title in one of `rooms`, else the nearest place in
/// the one that shows most of it.
QRect InReach(const QRect& place, const QList<QRect>& rooms);

}  // namespace ostrel::ui
