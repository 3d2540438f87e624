#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <optional>
#include <vector>

#include "platform/UVC.h"
#include "virtualcam/scene/ColourProcess.h"
#include "virtualcam/scene/FrameGenerator.h"
#include "virtualcam/scene/Image.h"
#include "virtualcam/scene/Noise.h"
#include "virtualcam/scene/Scenery.h"

namespace virtualcam {
namespace {

/// What the lens and the sharpness make of a picture. While it stays the same, the scenery need not
/// be painted again.
struct Optics {
    Viewport view;
    int blur = 0;        // pixels
    double sharpen = 0;  // strength

    bool operator==(const Optics&) const = default;
};

/// Turns a motor's arc seconds into degrees of the view. The landscape ends `limit` degrees to a
/// side: the farther the motor, the less each degree of it moves the view.
double turned(int arcSeconds, double limit) {
    return limit * std::tanh(arcSeconds / 3600.0 / limit);
}

Optics opticsOf(const PictureState& state, PictureSize size) {
    constexpr int sharpestFocus = 160;
    constexpr int depthOfField = 48;
    const double zoom = 1 + 2 * state.zoom / 1000.0;
    const double scale = size.width * zoom / 640;       // half of the landscape at the widest
    const double x = 640 + 10 * turned(state.pan, 30);  // ten units are a degree
    const double y = 440 - 10 * turned(state.tilt, 20);
    const int defocus = std::max(0, std::abs(state.focus - sharpestFocus) - depthOfField);
    const double sharpen = (state.sharpness - 9) / (state.sharpness < 9 ? 9.0 : 100.0);
    return {{x - size.width / scale / 2, y - size.height / scale / 2, scale},
            static_cast<int>(std::ceil(defocus * scale / 88)),
            std::max(-1.0, sharpen + styleOf(state).sharpness)};
}

/// The lamp flickers with the mains at 60 Hz; unless the exposure keeps to that, each row catches
/// another part of the flicker. Returns the brightness of row `y`.
float flicker(const PictureState& state, std::uint64_t index, int y, int height) {
    if (state.powerLine == powerLine60Hz)
        return 1;
    const double depth = state.powerLine == powerLineDisabled ? 0.05 : 0.035;
    // 120 flickers in the time of 30 pictures.
    const double phase = 4.0 * y / height + 0.021 * static_cast<double>(index);
    return static_cast<float>(1 - depth + depth * std::cos(2 * std::numbers::pi * phase));
}

class SceneGenerator : public FrameGenerator {
  public:
    explicit SceneGenerator(PictureSize size)
        : size_(size), noiseLine_(static_cast<std::size_t>(size.width)) {}

    void generate(const PictureState& state, std::uint64_t index,
                  std::span<std::uint32_t> pixels) override;

  private:
    void drawScenery(const Optics& optics);
    void develop(const std::uint32_t* light, const ColourProcess& colours, float bright,
                 std::uint32_t* out);

    const PictureSize size_;
    std::optional<Optics> optics_;
    Image scenery_;  // as `optics_` show it
    Noise noise_;
    std::vector<int> noiseLine_;  // of one row
};

void SceneGenerator::drawScenery(const Optics& optics) {
    scenery_ = Image(size_.width, size_.height);
    Painter painter(scenery_, optics.view, 1);
    paintScenery(painter);
    blur(scenery_, optics.blur);
    sharpen(scenery_, optics.sharpen);
    optics_ = optics;
}

/// Makes one row of the picture from the light that fell on it.
void SceneGenerator::develop(const std::uint32_t* light, const ColourProcess& colours, float bright,
                             std::uint32_t* out) {
    for (std::size_t x = 0; x < noiseLine_.size(); ++x) {
        const auto tone = [&](std::size_t channel) {
            const auto value = static_cast<int>(light[x] >> (16 - 8 * channel) & 0xFFU);
            const int at = value + noiseLine_[x] + Noise::most;
            return bright * colours.curves[channel][static_cast<std::size_t>(at)];
        };
        const float red = tone(0);
        const float green = tone(1);
        const float blue = tone(2);
        const auto mix = [&](const std::array<float, 3>& line) {
            const float value = line[0] * red + line[1] * green + line[2] * blue + 0.5F;
            return static_cast<std::uint32_t>(
                static_cast<int>(std::min(255.0F, std::max(0.0F, value))));
        };
        out[x] =
            mix(colours.matrix[0]) << 16 | mix(colours.matrix[1]) << 8 | mix(colours.matrix[2]);
    }
}

void SceneGenerator::generate(const PictureState& state, std::uint64_t index,
                              std::span<std::uint32_t> pixels) {
    const Optics optics = opticsOf(state, size_);
    if (optics_ != optics)
        drawScenery(optics);
    const ColourProcess colours(state);
    Image picture = scenery_;
    Painter painter(picture, optics.view, 1 + 2 * optics.blur);
    paintBalloon(painter, static_cast<double>(index) / framesPerSecond);
    for (int y = 0; y < size_.height; ++y) {
        const int row = state.flipVertical != 0 ? size_.height - 1 - y : y;
        const auto start = static_cast<std::size_t>(row) * static_cast<std::size_t>(size_.width);
        std::uint32_t* out = &pixels[start];
        noise_.row(state, index, y, noiseLine_);
        develop(picture.row(y), colours, flicker(state, index, y, size_.height), out);
        if (state.flipHorizontal != 0)
            std::reverse(out, out + size_.width);
    }
}

}  // namespace

std::unique_ptr<FrameGenerator> makeSceneGenerator(PictureSize size) {
    return std::make_unique<SceneGenerator>(size);
}

}  // namespace virtualcam
