#include "ui/screen_place.h"

#include <gtest/gtest.h>

namespace ostrel::ui {
namespace {

TEST(ScreenPlace, AWindowOpensBesideAnotherInTheRoomAndComesBackIntoReach) {
  constexpr QRect kRoom(0, 30, 1000, 600);  // below a panel
  using Places = std::pair<QRect, QRect>;
  for (const auto& [other, place] : {Places{{0, 40, 400, 300}, {400, 40, 600, 500}},
                                     {{600, 200, 400, 300}, {0, 130, 600, 500}},
                                     {{300, 40, 400, 300}, {200, 30, 600, 500}}}) {
    EXPECT_EQ(Beside(other, {600, 500}, kRoom), place);
  }
  EXPECT_EQ(Beside({300, 40, 400, 300}, {2000, 2000}, kRoom), kRoom);
  for (const auto& [stored, place] : {Places{{-50, 100, 400, 300}, {-50, 100, 400, 300}},
                                      {{950, 100, 400, 300}, {600, 100, 400, 300}},
                                      {{100, 20, 400, 300}, {100, 30, 400, 300}},
                                      {{-700, 590, 400, 300}, {-700, 300, 400, 300}}}) {
    EXPECT_EQ(InReach(stored, {kRoom, {-1000, 0, 1000, 600}}), place);
  }
}

}  // namespace
}  // namespace ostrel::ui
