#include <gmock/gmock.h>

#include <cmath>
#include <vector>

#include "virtualcam/FrameGenerator.h"

namespace virtualcam {
namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;
constexpr std::uint64_t kIndex = 100;
using Picture = std::vector<std::uint32_t>;

int red(std::uint32_t pixel) {
    return static_cast<int>(pixel >> 16 & 0xFFU);
}
int green(std::uint32_t pixel) {
    return static_cast<int>(pixel >> 8 & 0xFFU);
}
int blue(std::uint32_t pixel) {
    return static_cast<int>(pixel & 0xFFU);
}
int luma(std::uint32_t pixel) {
    return (54 * red(pixel) + 183 * green(pixel) + 19 * blue(pixel)) / 256;
}

template <class Measure>
double mean(const Picture& picture, Measure measure) {
    double sum = 0;
    for (const std::uint32_t pixel : picture)
        sum += measure(pixel);
    return sum / static_cast<double>(picture.size());
}

double brightness(const Picture& picture) {
    return mean(picture, luma);
}

double spread(const Picture& picture) {
    const double middle = brightness(picture);
    return std::sqrt(mean(picture, [&](auto pixel) { return std::pow(luma(pixel) - middle, 2); }));
}

double colourfulness(const Picture& picture) {
    return mean(picture, [](auto pixel) {
        return std::max({red(pixel), green(pixel), blue(pixel)}) -
               std::min({red(pixel), green(pixel), blue(pixel)});
    });
}

/// How much warmer than neutral: red less blue.
double warmth(const Picture& picture) {
    return mean(picture, [](auto pixel) { return red(pixel) - blue(pixel); });
}

/// The share of pixels below a fifth of white.
double darkness(const Picture& picture) {
    return mean(picture, [](auto pixel) { return luma(pixel) < 51 ? 1.0 : 0.0; });
}

/// The mean step from each pixel to the next: detail and noise.
double detail(const Picture& picture) {
    double sum = 0;
    for (std::size_t i = 1; i < picture.size(); ++i)
        sum += std::abs(luma(picture[i]) - luma(picture[i - 1]));
    return sum / static_cast<double>(picture.size());
}

double difference(const Picture& first, const Picture& second) {
    double sum = 0;
    for (std::size_t i = 0; i < first.size(); ++i)
        sum += std::abs(luma(first[i]) - luma(second[i]));
    return sum / static_cast<double>(first.size());
}

/// Like `difference`, of each colour.
double distance(const Picture& first, const Picture& second) {
    double sum = 0;
    for (std::size_t i = 0; i < first.size(); ++i)
        sum += std::abs(red(first[i]) - red(second[i])) +
               std::abs(green(first[i]) - green(second[i])) +
               std::abs(blue(first[i]) - blue(second[i]));
    return sum / static_cast<double>(3 * first.size());
}

class PictureTest : public testing::Test {
  protected:
    PictureTest() { generator->configure({kWidth, kHeight}); }

    Picture draw(const PictureState& state, std::uint64_t index = kIndex) {
        Picture picture(static_cast<std::size_t>(kWidth) * kHeight);
        generator->generate(state, index, picture);
        return picture;
    }

    /// The plain picture with one control at `value`.
    Picture with(int PictureState::*control, int value) {
        PictureState state = plain;
        state.*control = value;
        return draw(state);
    }

    using Measure = double (*)(const Picture&);

    /// The measure rises from each value of the control to the next, by at least `step`.
    void rises(int PictureState::*control, const std::vector<int>& values, Measure measure,
               double step) {
        double last = -1e9;
        for (const int value : values) {
            const double now = measure(with(control, value));
            EXPECT_GE(now, last + step) << "at " << value;
            last = now;
        }
    }

    PictureState plain;
    std::unique_ptr<FrameGenerator> generator = makeSceneGenerator();
};

TEST_F(PictureTest, LightAndTone) {
    rises(&PictureState::brightness, {-255, 7, 255}, brightness, 20);
    rises(&PictureState::gain, {0, 100, 255}, brightness, 10);
    rises(&PictureState::exposureTime, {1, 20, 167, 333}, brightness, 10);
    rises(&PictureState::gamma, {100, 238, 500}, brightness, 20);
    rises(&PictureState::backlight, {0, 5, 10}, brightness, 5);
    rises(&PictureState::contrast, {-255, 7, 255}, spread, 10);
    rises(&PictureState::dynamicRange, {8, 4, 0}, spread, 3);
    rises(&PictureState::dynamicRange, {8, 0}, darkness, 0.005);
    rises(&PictureState::backlight, {10, 0}, darkness, 0.005);
}

TEST_F(PictureTest, ExposureCompensationActsWhileItIsOn) {
    EXPECT_EQ(with(&PictureState::exposureCompensation, 7), draw(plain));
    plain.exposureCompensationOff = 0;
    rises(&PictureState::exposureCompensation, {-7, 0, 7}, brightness, 15);
}

TEST_F(PictureTest, Colour) {
    rises(&PictureState::saturation, {0, 100, 200}, colourfulness, 20);
    EXPECT_LT(colourfulness(with(&PictureState::saturation, 0)), 2);
    rises(&PictureState::redGain, {-10, 0, 10}, warmth, 5);
    rises(&PictureState::blueGain, {10, 0, -10}, warmth, 5);
    EXPECT_EQ(with(&PictureState::whiteBalance, 2800), draw(plain)) << "automatic is neutral";
    plain.autoWhiteBalance = 0;
    rises(&PictureState::whiteBalance, {2800, 5200, 10000}, warmth, 15);
}

TEST_F(PictureTest, HueTurnsTheColoursAndLeavesTheGreys) {
    EXPECT_GT(distance(with(&PictureState::hue, -70), with(&PictureState::hue, 70)), 10);
    // The blue of the sky goes green one way and violet the other.
    const Measure greenOverBlue = [](const Picture& picture) {
        return mean(picture, green) - mean(picture, blue);
    };
    rises(&PictureState::hue, {77, 7, -63}, greenOverBlue, 5);
    plain.saturation = 0;
    EXPECT_LT(difference(with(&PictureState::hue, -63), draw(plain)), 0.6);
}

TEST_F(PictureTest, DetailAndNoise) {
    rises(&PictureState::sharpness, {0, 9, 255}, detail, 0.4);
    EXPECT_EQ(with(&PictureState::focus, 200), draw(plain)) << "within the depth of field";
    rises(&PictureState::focus, {1023, 480, 160}, detail, 0.2);
    rises(&PictureState::focus, {0, 160}, detail, 0.2);
    rises(&PictureState::noiseReduction2D, {6, 3, 0}, detail, 0.3);
    plain.noiseReduction2D = plain.noiseReduction3D = 0;
    plain.brightness = -20;  // far from the white end, where noise is cut off
    plain.exposureTime = 20;
    rises(&PictureState::gain, {0, 100, 200}, detail, 0.2);
}

TEST_F(PictureTest, ReductionIn3DCalmsWhatChangesFromPictureToPicture) {
    const auto restless = [&](int level) {
        PictureState state;
        state.noiseReduction3D = level;
        return difference(draw(state, kIndex), draw(state, kIndex + 1));
    };
    EXPECT_GT(restless(0), restless(4) + 0.5);
    EXPECT_GT(restless(4), restless(8) + 0.5);
}

TEST_F(PictureTest, FlipsAreExactMirrors) {
    const Picture upright = draw(plain);
    const Picture mirrored = with(&PictureState::flipHorizontal, 1);
    const Picture inverted = with(&PictureState::flipVertical, 1);
    EXPECT_NE(mirrored, upright);
    for (std::size_t y = 0; y < kHeight; ++y)
        for (std::size_t x = 0; x < kWidth; ++x) {
            ASSERT_EQ(mirrored[y * kWidth + kWidth - 1 - x], upright[y * kWidth + x]);
            ASSERT_EQ(inverted[(kHeight - 1 - y) * kWidth + x], upright[y * kWidth + x]);
        }
}

TEST_F(PictureTest, PanAndTiltMoveTheView) {
    // One degree is five pixels at this size; noise off, and away from what moves.
    plain.noiseReduction2D = 6;
    plain.noiseReduction3D = 8;
    const Picture ahead = draw(plain);
    const Picture right = with(&PictureState::pan, 2 * 3600);
    const Picture up = with(&PictureState::tilt, 2 * 3600);
    const Picture down = with(&PictureState::tilt, -2 * 3600);
    double panned = 0;
    double tilted = 0;
    double unmoved = 0;
    for (std::size_t y = 160; y < 220; ++y)
        for (std::size_t x = 60; x < 300; ++x) {
            const auto at = [&](const Picture& p, std::size_t column, std::size_t row) {
                return luma(p[row * kWidth + column]);
            };
            panned += std::abs(at(right, x, y) - at(ahead, x + 10, y));
            tilted += std::abs(at(up, x, y + 10) - at(ahead, x, y));
            unmoved += std::abs(at(right, x, y) - at(ahead, x, y));
        }
    EXPECT_LT(panned, unmoved / 5);
    EXPECT_LT(tilted, unmoved / 5);
    const auto sky = [](const Picture& p) { return mean(p, blue) - mean(p, green); };
    EXPECT_GT(sky(up), sky(down)) << "up is towards the sky";
}

TEST_F(PictureTest, ZoomEnlargesTheMiddle) {
    plain.noiseReduction2D = 6;
    plain.noiseReduction3D = 8;
    const Picture wide = draw(plain);
    const Picture near = with(&PictureState::zoom, 500);  // twice
    double matching = 0;
    double other = 0;
    for (std::size_t y = 125; y < 200; ++y)
        for (std::size_t x = 60; x < 260; ++x) {
            const auto at = [](const Picture& p, std::size_t column, std::size_t row) {
                return luma(p[row * kWidth + column]);
            };
            const int wanted = at(near, x, y);
            matching += std::abs(wanted - at(wide, 80 + x / 2, 60 + y / 2));
            other += std::abs(wanted - at(wide, x, y));
        }
    EXPECT_LT(matching, other / 2);
}

TEST_F(PictureTest, EveryStyleLooksDifferent) {
    std::vector<Picture> styles;
    for (int style = 0; style <= 6; ++style) {
        styles.push_back(with(&PictureState::style, style));
        for (int before = 0; before < style; ++before)
            EXPECT_GT(distance(styles.back(), styles[static_cast<std::size_t>(before)]), 1.5)
                << style << " and " << before;
    }
    EXPECT_EQ(styles[0], with(&PictureState::style, 7)) << "an unknown style is the plain picture";
}

TEST_F(PictureTest, WrongMainsFrequencyShowsAsRollingBands) {
    const auto rowBrightness = [](const Picture& picture, std::size_t y) {
        double sum = 0;
        for (std::size_t x = 0; x < kWidth; ++x)
            sum += luma(picture[y * kWidth + x]);
        return sum / kWidth;
    };
    const Picture calm = draw(plain);
    for (const int setting : {0, 1}) {
        const Picture banded = with(&PictureState::powerLine, setting);
        double least = 1;
        double most = 0;
        for (std::size_t y = 0; y < kHeight; ++y) {
            const double ratio = rowBrightness(banded, y) / rowBrightness(calm, y);
            least = std::min(least, ratio);
            most = std::max(most, ratio);
        }
        EXPECT_GT(most - least, 0.04) << setting;
        EXPECT_LT(most - least, 0.12) << "subtle";
    }
}

TEST_F(PictureTest, SceneMovesAndEqualArgumentsGiveEqualPictures) {
    const Picture first = draw(plain, 10);
    plain.noiseReduction2D = 6;
    plain.noiseReduction3D = 8;
    EXPECT_GT(difference(draw(plain, 10), draw(plain, 70)), 0.5);
    const auto second = makeSceneGenerator();
    second->configure({kWidth, kHeight});
    Picture again(first.size());
    second->generate(PictureState{}, 10, again);
    EXPECT_EQ(first, again);
}

}  // namespace
}  // namespace virtualcam
