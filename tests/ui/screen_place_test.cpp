#include "ui/screen_place.h"

#include <QList>
#include <gtest/gtest.h>

namespace ostrel::ui {
namespace {

constexpr QRect kRoom(0, 30, 1000, 600);  // below a panel

TEST(ScreenPlace, AWindowOpensBesideAnotherAndNeverLargerThanTheRoom) {
  struct Case {
    QRect other;
    QSize size;
    QRect place;
  };
  for (const auto& [other, size, place] : {Case{{0, 40, 400, 300}, {600, 500}, {400, 40, 600, 500}},
                                           {{600, 200, 400, 300}, {600, 500}, {0, 130, 600, 500}},
                                           {{300, 40, 400, 300}, {600, 500}, {200, 30, 600, 500}},
                                           {{300, 40, 400, 300}, {2000, 2000}, kRoom}}) {
    EXPECT_EQ(Beside(other, size, kRoom), place);
  }
}

TEST(ScreenPlace, AWindowThatCannotBeTakenByItsTitleComesBack) {
  const QList<QRect> rooms{kRoom, {-1000, 0, 1000, 600}};
  for (const auto& [stored, place] :
       {std::pair<QRect, QRect>{{-50, 100, 400, 300}, {-50, 100, 400, 300}},
        {{950, 100, 400, 300}, {600, 100, 400, 300}},
        {{100, 20, 400, 300}, {100, 30, 400, 300}},
        {{-700, 590, 400, 300}, {-700, 300, 400, 300}},
        {{4000, 4000, 400, 300}, {600, 330, 400, 300}}}) {
    EXPECT_EQ(InReach(stored, rooms), place);
  }
}

}  // namespace
}  // namespace ostrel::ui
