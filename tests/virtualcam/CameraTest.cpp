// The built-in camera as far as the application's tests do not see it: what it refuses, and that
// each control changes its picture, and the right way.

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <set>

#include "camera/UVCCameraControl.h"
#include "tests/support/CameraFixture.h"
#include "virtualcam/scene/FrameGenerator.h"

namespace virtualcam {
namespace {

TEST(CameraTest, TakesWhatIsLegalRefusesAllElseAndMovesWhatItHolds) {
    CameraFixture fixture;
    fixture.open();
    VirtualCamera& camera = fixture.camera();
    for (const auto& [unit, selector, length, value, taken] :
         std::vector<std::tuple<int, int, int, std::int64_t, bool>>{
             {3, PU_BRIGHTNESS_CONTROL, 2, -255, true},
             {3, PU_BRIGHTNESS_CONTROL, 2, -256, false},
             {3, PU_BRIGHTNESS_CONTROL, 2, 256, false},
             {3, PU_BRIGHTNESS_CONTROL, 3, 1, false},
             {3, 12, 2, 1, false},                                       // no such control
             {2, 2, 2, 1, false},                                        // no such unit
             {3, PU_WHITE_BALANCE_TEMPERATURE_CONTROL, 2, 2800, false},  // while it is automatic
             {1, CT_AE_MODE_CONTROL, 1, 1 | 8, false},                   // two modes at once
             {1, CT_PANTILT_ABSOLUTE_CONTROL, 8, 3600 - (std::int64_t{7200} << 32), true},
             {1, CT_PANTILT_ABSOLUTE_CONTROL, 8, 1, false},  // between two steps
             {16, XU_RGAIN, 2, -10, true},
             {16, XU_RGAIN, 2, 253, false},  // not -3
             {16, XU_RESTORE, 1, 0, false}}) {
        const PictureState before = camera.picture();
        EXPECT_EQ(g_uvcCamera->setData(value, length, selector, unit), taken ? 0 : 1)
            << unit << ", " << selector << ", " << value;
        EXPECT_EQ(camera.picture() != before, taken);
    }
    EXPECT_EQ(std::pair(camera.picture().pan, camera.picture().tilt), std::pair(3600, -7200));
    const int focus = camera.picture().focus;
    for (int picture = 0; picture < 30; ++picture)
        camera.nextPicture();
    EXPECT_NE(camera.picture().focus, focus);
}

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

/// Factors of red, green and blue, by which a picture's pixels are added up.
using Measure = std::array<int, 3>;
constexpr Measure light{1, 1, 1};
constexpr Measure warmth{1, 0, -1};
constexpr Measure sky{0, -1, 1};
constexpr Measure detail{};  // how unlike neighbours are instead: contrast, detail and noise

double measured(const Picture& picture, const Measure& factors) {
    const auto sum = [](std::uint32_t pixel, const Measure& by) {
        const auto part = [pixel](int bits) { return static_cast<int>(pixel >> bits & 0xFFU); };
        return by[0] * part(16) + by[1] * part(8) + by[2] * part(0);
    };
    double all = 0;
    for (std::size_t i = 1; i < picture.size(); ++i)
        all += factors == detail ? std::abs(sum(picture[i], light) - sum(picture[i - 1], light))
                                 : sum(picture[i], factors);
    return all;
}

TEST(PictureTest, EachControlChangesThePictureTheRightWay) {
    PictureState plain;
    plain.autoWhiteBalance = plain.exposureCompensationOff = 0;
    for (const auto& [control, low, high, measure] :
         std::vector<std::tuple<int PictureState::*, int, int, Measure>>{
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
             {&PictureState::pan, -36000, 36000, sky},
             {&PictureState::tilt, -36000, 36000, sky}}) {
        PictureState lower = plain;
        PictureState higher = plain;
        lower.*control = low;
        higher.*control = high;
        EXPECT_LT(measured(draw(lower), measure), measured(draw(higher), measure))
            << low << " to " << high;
    }
    PictureState turned;
    turned.flipHorizontal = turned.flipVertical = 1;
    Picture mirrored = draw(turned);
    std::ranges::reverse(mirrored);
    EXPECT_TRUE(mirrored == draw({}));
    std::set<Picture> styles;
    for (PictureState state; state.style <= 7; ++state.style)
        styles.insert(draw(state));
    EXPECT_EQ(styles.size(), 7U) << "an unknown one is the plain picture";
}

}  // namespace
}  // namespace virtualcam
