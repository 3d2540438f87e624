#pragma once

#include "virtualcam/scene/Image.h"
#include "virtualcam/scene/Painter.h"

namespace virtualcam {

/// One degree of the landscape, in its pixels.
inline constexpr double kPixelsPerDegree = 10;

/// Where the camera looks when it is neither panned nor tilted, in pixels of the landscape.
inline constexpr Point kSceneCentre{640, 440};

/// How much of the landscape it then shows at the widest zoom, in pixels.
inline constexpr double kSceneWidth = 640;

/// The clock's face, in pixels of the landscape.
inline constexpr Point kClockCentre{402, 372};
inline constexpr double kClockRadius = 46;

/// All that stands still: sky, sun, hills, test chart, portrait, clock face. Painted once.
const Image& landscape();

/// A hot-air balloon, and a cloud, both on nothing. Painted once.
const Image& balloon();
const Image& cloud();

/// The clock's second hand, `turn` (0 to 1) of a turn past twelve; as large as the face.
Image secondHand(double turn);

}  // namespace virtualcam
