#pragma once

#include "virtualcam/scene/Painter.h"

namespace virtualcam {

/// Paints all that stands still: sky, sun, hills, test chart, portrait. The landscape is 1280 units
/// wide and 880 high, which is as far as the camera can turn.
void paintScenery(Painter& painter);

/// Paints a hot-air balloon where it is `seconds` after the camera has started.
void paintBalloon(Painter& painter, double seconds);

}  // namespace virtualcam
