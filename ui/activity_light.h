// The two pictures of the activity light: a round light with a black rim on light grey.
#pragma once

#include <QPixmap>

#include "state/main_fields.h"

namespace ostrel::ui {

/// 8 by 8, sharp at the given number of screen pixels to one of these; empty for a dark light.
QPixmap LightPicture(Light light, qreal pixelRatio);

}  // namespace ostrel::ui
