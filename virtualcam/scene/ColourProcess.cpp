#include "virtualcam/scene/ColourProcess.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace virtualcam {
namespace {

constexpr double kDisplayGamma = 2.2;
constexpr double kNeutralKelvin = 5200;

/// Stops, contrast, saturation, warmth, sharpness, shadows.
constexpr std::array<Style, 7> kStyles{{
    {},                                    // normal
    {0.05, 1.16, 1.06, 0.00, 0.9, 0.00},   // clarity
    {0.45, 1.00, 1.04, 0.05, 0.0, 0.25},   // bright
    {0.10, 1.08, 0.90, -0.18, 0.3, 0.05},  // PC: calm and cool beside a screen
    {0.15, 1.20, 1.00, -0.42, 1.1, 0.00},  // clarity under LED light
    {0.28, 0.90, 0.98, 0.26, -0.7, 0.20},  // face: warm and soft
    {0.08, 1.06, 1.22, 0.06, 0.25, 0.00},  // default: vivid
}};

/// The factors on the light of red, green and blue.
std::array<double, 3> gains(const PictureState& state) {
    const Style& style = styleOf(state);
    double stops = style.stops + (state.gain - 6) / 100.0;
    // The camera keeps part of a change of the exposure time back, as its own gain follows.
    stops += 0.55 * std::log2(std::max(state.exposureTime, 1) / 167.0);
    if (state.exposureCompensationOff == 0)
        stops += state.exposureCompensation / 5.0;
    double red = 0.5 * style.warmth;
    double blue = -0.5 * style.warmth;
    if (state.autoWhiteBalance == 0) {
        const double warmer = std::log2(std::max(state.whiteBalance, 1000) / kNeutralKelvin);
        red += 0.6 * warmer;
        blue -= 0.8 * warmer;
    }
    return {std::exp2(stops + red) * (1 + 0.04 * state.redGain), std::exp2(stops),
            std::exp2(stops + blue) * (1 + 0.04 * state.blueGain)};
}

/// Bright light runs softly into white instead of breaking off.
double shoulder(double light) {
    constexpr double kKnee = 0.8;
    constexpr double kRest = 1 - kKnee;
    return light < kKnee ? light : kKnee + kRest * (1 - std::exp(-(light - kKnee) / kRest));
}

/// From light (0 to 1) to tone (0 to 1).
double tone(double light, const PictureState& state, const Style& style) {
    double y = std::pow(shoulder(light), 1 / kDisplayGamma * 238.0 / std::max(state.gamma, 40));
    const double lift = 0.064 * state.backlight + 0.5 * style.shadows;
    y = std::pow(y, 1 / (1 + lift));
    // Compression raises the shadows and holds the lights down; the middle stays.
    const double range = state.dynamicRange / 8.0;
    y += range * (1.5 * std::pow(1 - y, 3) * y - 0.8 * std::pow(y, 3) * (1 - y));
    y = 0.5 + (y - 0.5) * style.contrast * (1 + (state.contrast - 7) / 270.0);
    y += (state.brightness - 7) / 500.0;
    return std::clamp(y, 0.0, 1.0);
}

/// Turns the hue about the grey axis, keeping the brightness, and stretches the saturation.
ColourProcess::Matrix hueAndSaturation(double degrees, double saturation) {
    constexpr std::array<double, 3> kLuma{0.213, 0.715, 0.072};
    // The direction in which each channel turns.
    constexpr std::array<std::array<double, 3>, 3> kTurn{
        {{-0.213, -0.715, 0.928}, {0.143, 0.140, -0.283}, {-0.787, 0.715, 0.072}}};
    const double angle = degrees * std::numbers::pi / 180;
    ColourProcess::Matrix matrix{};
    for (std::size_t to = 0; to < 3; ++to)
        for (std::size_t from = 0; from < 3; ++from) {
            const double colour = (to == from ? 1.0 : 0.0) - kLuma[from];
            const double turned = colour * std::cos(angle) + kTurn[to][from] * std::sin(angle);
            matrix[to][from] = static_cast<float>(kLuma[from] + saturation * turned);
        }
    return matrix;
}

}  // namespace

const Style& styleOf(const PictureState& state) {
    const bool known = state.style >= 0 && static_cast<std::size_t>(state.style) < kStyles.size();
    return kStyles[known ? static_cast<std::size_t>(state.style) : 0];
}

ColourProcess::ColourProcess(const PictureState& state)
    : matrix_(
          hueAndSaturation(state.hue - 7, styleOf(state).saturation * state.saturation / 100.0)) {
    const Style& style = styleOf(state);
    const std::array<double, 3> gain = gains(state);
    for (std::size_t channel = 0; channel < curves_.size(); ++channel) {
        double input = -kMargin;
        for (float& output : curves_[channel]) {
            const double light = std::pow(std::clamp(input++, 0.0, 255.0) / 255, kDisplayGamma);
            output = static_cast<float>(255 * tone(light * gain[channel], state, style));
        }
    }
}

}  // namespace virtualcam
