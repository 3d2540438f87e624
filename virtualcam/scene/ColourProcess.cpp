#include "virtualcam/scene/ColourProcess.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace virtualcam {
namespace {

constexpr double displayGamma = 2.2;
constexpr double neutralKelvin = 5200;

/// Stops, contrast, saturation, warmth, sharpness, shadows.
constexpr std::array<Style, 7> styles{{
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
        const double warmer = std::log2(std::max(state.whiteBalance, 1000) / neutralKelvin);
        red += 0.6 * warmer;
        blue -= 0.8 * warmer;
    }
    return {std::exp2(stops + red) * (1 + 0.04 * state.redGain), std::exp2(stops),
            std::exp2(stops + blue) * (1 + 0.04 * state.blueGain)};
}

/// Bright light runs softly into white instead of breaking off.
double shoulder(double light) {
    constexpr double knee = 0.8;
    constexpr double rest = 1 - knee;
    return light < knee ? light : knee + rest * (1 - std::exp(-(light - knee) / rest));
}

/// From light (0 to 1) to tone (0 to 1).
double tone(double light, const PictureState& state, const Style& style) {
    double y = std::pow(shoulder(light), 1 / displayGamma * 238.0 / std::max(state.gamma, 40));
    const double lift = 0.064 * state.backlight + 0.5 * style.shadows;
    y = std::pow(y, 1 / (1 + lift));
    // Compression raises the shadows and holds the lights down; the middle stays.
    const double range = state.dynamicRange / 8.0;
    y += range * (1.5 * std::pow(1 - y, 3) * y - 0.8 * std::pow(y, 3) * (1 - y));
    y = 0.5 + (y - 0.5) * style.contrast * (1 + (state.contrast - 7) / 270.0);
    y += (state.brightness - 7) / 500.0;
    return std::clamp(y, 0.0, 1.0);
}

/// What channel `to` takes of channel `from`: turns the hue about the grey axis, keeping the
/// brightness, and stretches the saturation.
double share(std::size_t to, std::size_t from, double angle, double saturation) {
    constexpr std::array<double, 3> luma{0.213, 0.715, 0.072};
    // The direction in which each channel turns.
    constexpr std::array<std::array<double, 3>, 3> turn{
        {{-0.213, -0.715, 0.928}, {0.143, 0.140, -0.283}, {-0.787, 0.715, 0.072}}};
    const double colour = (to == from ? 1.0 : 0.0) - luma[from];
    const double turned = colour * std::cos(angle) + turn[to][from] * std::sin(angle);
    return luma[from] + saturation * turned;
}

}  // namespace

const Style& styleOf(const PictureState& state) {
    return styles.at(static_cast<std::size_t>(state.style));
}

ColourProcess::ColourProcess(const PictureState& state) {
    const Style& style = styleOf(state);
    const std::array<double, 3> gain = gains(state);
    const double angle = (state.hue - 7) * std::numbers::pi / 180;
    const double saturation = style.saturation * state.saturation / 100;
    for (std::size_t to = 0; to < 3; ++to) {
        double input = -Noise::most;
        for (float& output : curves[to]) {
            const double light = std::pow(std::clamp(input++, 0.0, 255.0) / 255, displayGamma);
            output = static_cast<float>(255 * tone(light * gain[to], state, style));
        }
        for (std::size_t from = 0; from < 3; ++from)
            matrix[to][from] = static_cast<float>(share(to, from, angle, saturation));
    }
}

}  // namespace virtualcam
