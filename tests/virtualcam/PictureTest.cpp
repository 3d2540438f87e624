// The pictures of the built-in camera: that each control changes them the right way, and that they
// are as they were when somebody last looked at them.

#include <gmock/gmock.h>

#include <QImage>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "virtualcam/scene/FrameGenerator.h"

namespace virtualcam {
namespace {

constexpr int width = 128;
constexpr int height = 96;

QImage draw(const PictureState& state, std::uint64_t index = 100) {
    std::vector<std::uint32_t> pixels(std::size_t{width} * height);
    const auto generator = makeSceneGenerator();
    generator->configure({width, height});
    generator->generate(state, index, pixels);
    return QImage(reinterpret_cast<const uchar*>(pixels.data()), width, height,
                  QImage::Format_RGB32)
        .copy();
}

/// Factors of red, green and blue, by which a picture's pixels are added up.
using Measure = std::array<int, 3>;
constexpr Measure light{1, 1, 1};
constexpr Measure warmth{1, 0, -1};
constexpr Measure green{-1, 2, -1};
constexpr Measure detail{};  // how unlike neighbours are instead: contrast, detail and noise

double measured(const QImage& picture, const Measure& factors) {
    const auto sum = [&](int x, int y, const Measure& by) {
        const QRgb pixel = picture.pixel(x, y);
        return by[0] * qRed(pixel) + by[1] * qGreen(pixel) + by[2] * qBlue(pixel);
    };
    double all = 0;
    for (int y = 0; y < height; ++y)
        for (int x = 1; x < width; ++x)
            all += factors == detail ? std::abs(sum(x, y, light) - sum(x - 1, y, light))
                                     : sum(x, y, factors);
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
             {&PictureState::contrast, 0, 255, detail},
             {&PictureState::sharpness, 0, 255, detail},
             {&PictureState::dynamicRange, 8, 0, detail},
             {&PictureState::focus, 1023, 160, detail},
             {&PictureState::noiseReduction2D, 6, 0, detail},
             {&PictureState::noiseReduction3D, 8, 0, detail},
             {&PictureState::redGain, -10, 10, warmth},
             {&PictureState::blueGain, 10, -10, warmth},
             {&PictureState::whiteBalance, 2800, 10000, warmth},
             {&PictureState::hue, 70, -70, warmth},
             {&PictureState::saturation, 200, 0, warmth},
             {&PictureState::pan, 36000, -36000, green},
             {&PictureState::tilt, 36000, -36000, green}}) {
        PictureState lower = plain;
        PictureState higher = plain;
        lower.*control = low;
        higher.*control = high;
        EXPECT_LT(measured(draw(lower), measure), measured(draw(higher), measure))
            << low << " to " << high;
    }
    PictureState turned;
    turned.flipHorizontal = 1;
    EXPECT_EQ(draw(turned), draw({}).mirrored(true, false));
    turned.flipVertical = 1;
    EXPECT_EQ(draw(turned), draw({}).mirrored(true, true));
    for (const int unknown : {-1, 7}) {
        PictureState other;
        other.style = unknown;
        EXPECT_EQ(draw(other), draw({})) << "the plain picture";
    }
}

TEST(PictureTest, OneGeneratorDrawsEachStateAsAFreshOneDoes) {
    const auto generator = makeSceneGenerator();
    for (const auto& [zoom, contrast, across] :
         {std::tuple(0, 7, 160), {500, 7, 160}, {500, 255, 160}, {500, 255, 80}, {0, 7, 160}}) {
        PictureState state;
        state.zoom = zoom;
        state.contrast = contrast;
        std::array<std::vector<std::uint32_t>, 2> pictures;
        const auto fresh = makeSceneGenerator();
        for (const auto& [one, pixels] :
             {std::pair(generator.get(), &pictures[0]), {fresh.get(), &pictures[1]}}) {
            pixels->resize(static_cast<std::size_t>(across * across * 3 / 4));
            one->configure({across, across * 3 / 4});
            one->generate(state, 5, *pixels);
        }
        EXPECT_TRUE(pictures[0] == pictures[1]);
    }
}

constexpr int degree = 3600;  // arc seconds

/// A picture that is kept. All but one are drawn without noise, which would hide small faults.
struct Kept {
    std::uint64_t index;
    PictureState state;
    bool noise = false;
};

const std::vector<Kept>& keptPictures() {
    static const std::vector<Kept> all{
        // The landscape: as it is seen first, its four corners, and parts of it close by: the
        // middle, the face, the bars, the balloon, the patches.
        {0, {}},
        {0, {.pan = -180 * degree, .tilt = 180 * degree}},
        {900, {.pan = 180 * degree, .tilt = 180 * degree}},
        {0, {.pan = -180 * degree, .tilt = -180 * degree}},
        {0, {.pan = 180 * degree, .tilt = -180 * degree}},
        {0, {.zoom = 1000}},
        {0, {.zoom = 1000, .pan = 24 * degree, .tilt = -7 * degree}},
        {0, {.zoom = 700, .pan = -18 * degree, .tilt = -2 * degree}},
        {300, {.zoom = 1000, .pan = -13 * degree, .tilt = 20 * degree}},
        {0, {.zoom = 600, .pan = 5 * degree, .tilt = -15 * degree}},
        // Lens and detail.
        {450, {.focus = 600}},
        {450, {.sharpness = 255, .zoom = 300, .focus = 40}},
        {450, {.sharpness = 3}},
        // Light and colour.
        {7, {.gain = 90}, true},
        {7, {.powerLine = 0}},
        {77, {.powerLine = 1}},
        {7, {.brightness = 120, .contrast = 200, .gamma = 120}},
        {7, {.hue = 90, .saturation = 220, .whiteBalance = 2800, .autoWhiteBalance = 0}},
        {7, {.backlight = 7, .exposureTime = 60, .dynamicRange = 6}},
        {7,
         {.exposureCompensationOff = 0, .exposureCompensation = 6, .blueGain = 9, .redGain = -9}},
        {7, {.exposureTime = 333, .exposureCompensation = -7, .style = 1}},
        {7, {.style = 2}},
        {7, {.style = 3}},
        {7, {.style = 4}},
        {7, {.style = 5}},
        {7, {.style = 6}},
    };
    return all;
}

/// All kept pictures on one sheet, in columns of five.
QImage drawSheet() {
    const auto count = static_cast<int>(keptPictures().size());
    QImage sheet(width * ((count + 4) / 5), height * 5, QImage::Format_RGB32);
    sheet.fill(Qt::black);
    for (int i = 0; i < count; ++i) {
        auto [index, state, noise] = keptPictures()[static_cast<std::size_t>(i)];
        state.noiseReduction2D = noise ? 1 : 6;
        state.noiseReduction3D = noise ? 1 : 8;
        const QImage picture = draw(state, index);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                sheet.setPixel(i / 5 * width + x, i % 5 * height + y, picture.pixel(x, y));
    }
    return sheet;
}

/// How many pixels of one of the pictures differ visibly.
int different(const QImage& sheet, const QImage& other, int left, int top) {
    int count = 0;
    for (int y = top; y < top + height; ++y)
        for (int x = left; x < left + width; ++x) {
            const QRgb is = sheet.pixel(x, y);
            const QRgb was = other.pixel(x, y);
            const int most =
                std::max({std::abs(qRed(is) - qRed(was)), std::abs(qGreen(is) - qGreen(was)),
                          std::abs(qBlue(is) - qBlue(was))});
            count += most > 6 ? 1 : 0;
        }
    return count;
}

// After a change of the scene that is meant, QUELVO_KEEP_PICTURES=1 keeps the new pictures instead.
TEST(PictureTest, ThePicturesAreThoseThatWereKept) {
    const QImage sheet = drawSheet();
    if (qEnvironmentVariableIsSet("QUELVO_KEEP_PICTURES")) {
        // In steps of eight: the file is then half as large, and what counts can still be told.
        QImage coarse = sheet;
        for (int y = 0; y < sheet.height(); ++y)
            for (int x = 0; x < sheet.width(); ++x)
                coarse.setPixel(x, y, (sheet.pixel(x, y) & 0xFFF8F8F8) | 0x00040404);
        ASSERT_TRUE(coarse.save(QUELVO_PICTURES, "PNG", 0));
    }
    const QImage kept(QUELVO_PICTURES);
    ASSERT_EQ(kept.size(), sheet.size());
    for (int left = 0; left < sheet.width(); left += width)
        for (int top = 0; top < sheet.height(); top += height)
            EXPECT_LE(different(sheet, kept, left, top), 2)
                << "picture " << left / width * 5 + top / height;
}

}  // namespace
}  // namespace virtualcam
