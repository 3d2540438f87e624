#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <optional>
#include <vector>

#include "virtualcam/scene/ColourProcess.h"
#include "virtualcam/scene/FrameGenerator.h"
#include "virtualcam/scene/Image.h"
#include "virtualcam/scene/Noise.h"
#include "virtualcam/scene/Scenery.h"

namespace virtualcam {
namespace {

/// What of a picture lens and detail decide; while it stays, the scenery need not be drawn again.
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
    constexpr int kSharpestFocus = 160;
    constexpr int kDepthOfField = 48;
    const double zoom = 1 + 2 * state.zoom / 1000.0;
    const double scale = size.width * zoom / kSceneWidth;
    const double x = kSceneCentre.x + turned(state.pan, 30) * kPixelsPerDegree;
    const double y = kSceneCentre.y - turned(state.tilt, 20) * kPixelsPerDegree;
    const int defocus = std::max(0, std::abs(state.focus - kSharpestFocus) - kDepthOfField);
    const double sharpen =
        state.sharpness < 9 ? (state.sharpness - 9) / 9.0 : (state.sharpness - 9) / 100.0;
    return {{x - size.width / scale / 2, y - size.height / scale / 2, scale},
            static_cast<int>(std::ceil(defocus * scale / 88)),
            std::max(-1.0, sharpen + styleOf(state).sharpness)};
}

/// Something that moves: its picture as the lens draws it, with room for the blur around it.
class Sprite {
  public:
    void draw(const Image& source, const Optics& optics) {
        const double scale = optics.view.scale;
        margin_ = 2 * optics.blur + 2;
        drawn_ = resample(source, {-margin_ / scale, -margin_ / scale, scale},
                          static_cast<int>(source.width * scale) + 2 * margin_,
                          static_cast<int>(source.height * scale) + 2 * margin_);
        blur(drawn_, optics.blur);
        sharpen(drawn_, optics.sharpen);
    }

    /// Puts it into `picture`, its upper left corner at `corner` of the landscape.
    void put(Image& picture, const Optics& optics, Point corner) const {
        const auto at = [&](double position, double origin) {
            return static_cast<int>(std::lround((position - origin) * optics.view.scale)) - margin_;
        };
        blend(picture, drawn_, at(corner.x, optics.view.left), at(corner.y, optics.view.top));
    }

  private:
    Image drawn_;
    int margin_ = 0;
};

/// The lamp flickers with the mains at 60 Hz; unless the exposure keeps to that, each row catches
/// another part of the flicker. Returns the brightness of row `y`.
float flicker(const PictureState& state, std::uint64_t index, int y, int height) {
    constexpr int kMains60Hz = 2;
    constexpr double kBands = 4;  // two flickers in each cycle, thirty pictures a second
    if (state.powerLine == kMains60Hz)
        return 1;
    const double depth = state.powerLine == 0 ? 0.05 : 0.035;
    const double phase = kBands * y / height + 0.021 * static_cast<double>(index);
    return static_cast<float>(1 - depth + depth * std::cos(2 * std::numbers::pi * phase));
}

class SceneGenerator : public FrameGenerator {
  public:
    void configure(PictureSize size) override;
    void generate(const PictureState& state, std::uint64_t index,
                  std::span<std::uint32_t> pixels) override;

  private:
    void drawScenery(const Optics& optics);
    void compose(std::uint64_t index);
    void develop(const PictureState& state, std::uint64_t index, int y, std::uint32_t* out);

    PictureSize size_;
    std::optional<Optics> optics_;
    Image background_;
    Sprite balloon_;
    Sprite cloud_;
    Sprite hand_;
    std::optional<std::uint64_t> handStep_;

    std::optional<PictureState> state_;
    std::optional<ColourProcess> colours_;
    Noise noise_;
    Image picture_;

    // One row on its way: the noise, and the tones of each channel.
    std::vector<std::int16_t> noiseLine_;
    std::vector<float> red_;
    std::vector<float> green_;
    std::vector<float> blue_;
};

void SceneGenerator::configure(PictureSize size) {
    size_ = size;
    optics_.reset();
    const auto width = static_cast<std::size_t>(size.width);
    noiseLine_.assign(width, 0);
    red_.assign(width, 0);
    green_.assign(width, 0);
    blue_.assign(width, 0);
}

void SceneGenerator::drawScenery(const Optics& optics) {
    background_ = resample(landscape(), optics.view, size_.width, size_.height);
    blur(background_, optics.blur);
    sharpen(background_, optics.sharpen);
    balloon_.draw(balloon(), optics);
    cloud_.draw(cloud(), optics);
    handStep_.reset();
    optics_ = optics;
}

void SceneGenerator::compose(std::uint64_t index) {
    const double seconds = static_cast<double>(index) / kFramesPerSecond;
    picture_ = background_;
    constexpr double kLap = 1280 + 260;  // across the landscape and out of sight
    const auto drift = [&](double start, double speed) {
        return std::fmod(start + speed * seconds, kLap) - 240;
    };
    cloud_.put(picture_, *optics_, {drift(620, 9), 212});
    cloud_.put(picture_, *optics_, {drift(990, 6), 262});
    cloud_.put(picture_, *optics_, {drift(180, 7), 120});
    balloon_.put(picture_, *optics_, {drift(770, 14), 250 + 14 * std::sin(0.5 * seconds)});

    constexpr std::uint64_t kStepsPerTurn = 240;
    constexpr std::uint64_t kPicturesPerTurn = std::uint64_t{60} * kFramesPerSecond;
    const std::uint64_t step = index * kStepsPerTurn / kPicturesPerTurn;
    if (handStep_ != step)
        hand_.draw(secondHand(static_cast<double>(step % kStepsPerTurn) / kStepsPerTurn), *optics_);
    handStep_ = step;
    hand_.put(picture_, *optics_, {kClockCentre.x - kClockRadius, kClockCentre.y - kClockRadius});
}

/// Makes one row of the picture from the light that fell on it.
void SceneGenerator::develop(const PictureState& state, std::uint64_t index, int y,
                             std::uint32_t* out) {
    const int width = size_.width;
    const std::uint32_t* light = picture_.row(y);
    noise_.row(index, y, width, noiseLine_.data());
    const auto& curves = colours_->curves();
    for (int x = 0; x < width; ++x) {
        const auto at = static_cast<std::size_t>(x);
        const int offset = noiseLine_[at] + ColourProcess::kMargin;
        const auto tone = [&](std::size_t channel, unsigned shift) {
            const int value = static_cast<int>((light[x] >> shift) & 0xFFU) + offset;
            return curves[channel][static_cast<std::size_t>(value)];
        };
        red_[at] = tone(0, 16);
        green_[at] = tone(1, 8);
        blue_[at] = tone(2, 0);
    }
    ColourProcess::Matrix m = colours_->matrix();
    const float bright = flicker(state, index, y, size_.height);
    for (auto& line : m)
        for (float& factor : line)
            factor *= bright;
    const float* red = red_.data();
    const float* green = green_.data();
    const float* blue = blue_.data();
    for (int x = 0; x < width; ++x) {
        const auto mix = [&](const std::array<float, 3>& line) {
            const float value = line[0] * red[x] + line[1] * green[x] + line[2] * blue[x] + 0.5F;
            return static_cast<std::uint32_t>(
                static_cast<int>(std::min(255.0F, std::max(0.0F, value))));
        };
        out[x] = mix(m[0]) << 16 | mix(m[1]) << 8 | mix(m[2]);
    }
    if (state.flipHorizontal != 0)
        std::reverse(out, out + width);
}

void SceneGenerator::generate(const PictureState& state, std::uint64_t index,
                              std::span<std::uint32_t> pixels) {
    const Optics optics = opticsOf(state, size_);
    if (optics_ != optics)
        drawScenery(optics);
    if (state_ != state) {
        colours_.emplace(state);
        noise_.configure(state);
        state_ = state;
    }
    compose(index);
    for (int y = 0; y < size_.height; ++y) {
        const int row = state.flipVertical != 0 ? size_.height - 1 - y : y;
        const auto start = static_cast<std::size_t>(row) * static_cast<std::size_t>(size_.width);
        develop(state, index, y, pixels.data() + start);
    }
}

}  // namespace

std::unique_ptr<FrameGenerator> makeSceneGenerator() {
    return std::make_unique<SceneGenerator>();
}

}  // namespace virtualcam
