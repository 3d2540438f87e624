// That each control changes the picture, and the right way.

#include <gmock/gmock.h>

#include <cmath>
#include <numeric>
#include <set>

#include "virtualcam/FrameGenerator.h"

namespace virtualcam {
namespace {

constexpr std::size_t kWidth = 160;
constexpr std::size_t kHeight = 120;
using Picture = std::vector<std::uint32_t>;

Picture draw(const PictureState& state) {
    Picture picture(kWidth * kHeight);
    const auto generator = makeSceneGenerator();
    generator->configure({kWidth, kHeight});
    generator->generate(state, 100, picture);
    return picture;
}

/// The sum over the picture of red, green and blue, each times its factor.
double sum(const Picture& picture, double red, double green, double blue) {
    return std::accumulate(picture.begin(), picture.end(), 0.0, [&](double all, auto pixel) {
        return all + red * (pixel >> 16 & 0xFFU) + green * (pixel >> 8 & 0xFFU) +
               blue * (pixel & 0xFFU);
    });
}

double light(const Picture& picture) {
    return sum(picture, 1, 1, 1);
}
double warmth(const Picture& picture) {
    return sum(picture, 1, 0, -1);
}
double sky(const Picture& picture) {
    return sum(picture, 0, -1, 1);
}

/// How unlike neighbours are: contrast, detail and noise.
double detail(const Picture& picture) {
    double all = 0;
    for (std::size_t i = 1; i < picture.size(); ++i)
        all += std::abs(static_cast<int>(picture[i] >> 8 & 0xFFU) -
                        static_cast<int>(picture[i - 1] >> 8 & 0xFFU));
    return all;
}

TEST(PictureTest, EachControlChangesThePictureTheRightWay) {
    PictureState plain;
    plain.autoWhiteBalance = plain.exposureCompensationOff = 0;
    for (const auto& [control, low, high, measure] :
         std::vector<std::tuple<int PictureState::*, int, int, double (*)(const Picture&)>>{
             {&PictureState::brightness, -255, 255, light},
             {&PictureState::gain, 0, 255, light},
             {&PictureState::exposureTime, 1, 333, light},
             {&PictureState::gamma, 100, 500, light},
             {&PictureState::backlight, 0, 10, light},
             {&PictureState::exposureCompensation, -7, 7, light},
             {&PictureState::powerLine, 1, 2, light},
             {&PictureState::contrast, -255, 255, detail},
             {&PictureState::sharpness, 0, 255, detail},
             {&PictureState::dynamicRange, 8, 0, detail},
             {&PictureState::focus, 1023, 160, detail},
             {&PictureState::noiseReduction2D, 6, 0, detail},
             {&PictureState::noiseReduction3D, 8, 0, detail},
             {&PictureState::redGain, -10, 10, warmth},
             {&PictureState::blueGain, 10, -10, warmth},
             {&PictureState::whiteBalance, 2800, 10000, warmth},
             {&PictureState::hue, -70, 70, sky},
             {&PictureState::saturation, 200, 0, warmth},
             {&PictureState::tilt, -36000, 36000, sky}}) {
        PictureState lower = plain;
        PictureState higher = plain;
        lower.*control = low;
        higher.*control = high;
        EXPECT_LT(measure(draw(lower)), measure(draw(higher))) << low << " to " << high;
    }
}

TEST(PictureTest, FlipsAreExactMirrorsAndStylesDiffer) {
    PictureState state;
    const Picture plain = draw(state);
    state.flipHorizontal = state.flipVertical = 1;
    const Picture turned = draw(state);
    EXPECT_TRUE(std::equal(plain.begin(), plain.end(), turned.rbegin()));
    EXPECT_NE(turned, plain);
    state = {};
    std::set<Picture> styles;
    for (state.style = 0; state.style <= 7; ++state.style)
        styles.insert(draw(state));
    EXPECT_EQ(styles.size(), 7U) << "an unknown one is the plain picture";
}

}  // namespace
}  // namespace virtualcam
