#pragma once

#include <array>

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

/// The preset of `XU_STYLE`; a number outside of the list gives the plain picture.
const Style& styleOf(const PictureState& state);

/// Turns the light of the scene into the colours of the picture.
class ColourProcess {
  public:
    /// Room at either end of a curve, so that noise on the light needs no check.
    static constexpr int kMargin = 64;

    using Curve = std::array<float, 256 + 2 * kMargin>;
    using Matrix = std::array<std::array<float, 3>, 3>;

    explicit ColourProcess(const PictureState& state);

    /// One curve for each of red, green and blue: from a light of 0 to 255, at `kMargin` and on, to
    /// a tone of 0 to 255.
    const std::array<Curve, 3>& curves() const { return curves_; }

    /// Mixes the three tones: hue and saturation.
    const Matrix& matrix() const { return matrix_; }

  private:
    std::array<Curve, 3> curves_;
    Matrix matrix_;
};

}  // namespace virtualcam
