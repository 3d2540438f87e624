#pragma once

#include <array>

#include "virtualcam/scene/Noise.h"
#include "virtualcam/scene/PictureState.h"

namespace virtualcam {

/// How one picture style changes the plain picture.
struct Style {
    double stops = 0;       ///< exposure
    double contrast = 1;    ///< factor about mid-grey
    double saturation = 1;  ///< factor
    double warmth = 0;      ///< stops of red over blue
    double sharpness = 0;   ///< added to the strength of the detail
    double shadows = 0;     ///< how much the dark parts are lifted, 0 to 1
};

/// The preset of `XU_STYLE`.
const Style& styleOf(const PictureState& state);

/// Turns the light of the scene into the colours of the picture.
struct ColourProcess {
    explicit ColourProcess(const PictureState& state);

    /// For each of red, green and blue, the tone (0 to 255) that a light gives. The light of 0 is
    /// at `Noise::most`: there is room at either end, so that light with noise on it needs no
    /// check.
    std::array<std::array<float, 256 + 2 * Noise::most>, 3> curves;

    /// Mixes the three tones: hue and saturation.
    std::array<std::array<float, 3>, 3> matrix;
};

}  // namespace virtualcam
