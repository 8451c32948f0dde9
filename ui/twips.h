// The station's windows are laid out in twips (1/1440 inch), 15 to a pixel at 96 dpi; on a finer
// screen the pixels meant here are the scaled ones.
#pragma once

#include <QRect>

namespace ostrel::ui {

inline constexpr int kTwipsPerPixel = 15;

inline QRect FromTwips(int left, int top, int width, int height) {
  return {left / kTwipsPerPixel, top / kTwipsPerPixel, width / kTwipsPerPixel,
          height / kTwipsPerPixel};
}

}  // namespace ostrel::ui
