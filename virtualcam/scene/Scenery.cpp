#include "virtualcam/scene/Scenery.h"

#include <array>
#include <numbers>

namespace virtualcam {
namespace {

constexpr double kPi = std::numbers::pi;
constexpr int kWidth = 1280;
constexpr int kHeight = 880;
constexpr Point kSun{742, 268};

const Colour kInk{0.10, 0.11, 0.14, 1};
const Colour kPaper{0.94, 0.93, 0.89, 1};

void paintSky(Image& image) {
    const Colour high{0.16, 0.38, 0.70, 1};
    const Colour middle{0.50, 0.72, 0.90, 1};
    const Colour low{0.98, 0.86, 0.70, 1};
    const Box all{0, 0, kWidth, kHeight};
    fill(
        image, all, [](Point) { return -1.0; },
        [&](Point p) {
            Colour sky = p.y < 330 ? between(high, middle, p.y / 330)
                                   : between(middle, low, (p.y - 330) / 180);
            const double glow = std::exp(-circle(p, kSun, 0) / 90);
            return between(sky, {1, 0.93, 0.72, 1}, 0.75 * glow);
        });
    fillCircle(image, kSun, 30, {1, 0.96, 0.80, 1});
}

/// One range of hills: its ridge is a sum of waves.
struct Ridge {
    double base;
    double height;
    double wave;  // pixels
    double phase;
    Colour top;
    Colour bottom;

    double at(double x) const {
        const double t = 2 * kPi * (x / wave) + phase;
        return base -
               height * (0.6 * std::sin(t) + 0.3 * std::sin(2.3 * t) + 0.1 * std::sin(6.1 * t));
    }
};

const std::array<Ridge, 4> kRidges{{
    {440, 46, 520, 0.4, {0.56, 0.66, 0.78, 1}, {0.74, 0.76, 0.78, 1}},
    {485, 30, 430, 2.1, {0.36, 0.52, 0.56, 1}, {0.52, 0.64, 0.58, 1}},
    {530, 24, 610, 4.4, {0.24, 0.46, 0.30, 1}, {0.38, 0.58, 0.34, 1}},
    {588, 16, 760, 1.2, {0.34, 0.56, 0.24, 1}, {0.18, 0.36, 0.16, 1}},
}};

void paintRidge(Image& image, const Ridge& ridge) {
    fill(
        image, {0, ridge.base - ridge.height - 2, kWidth, kHeight},
        [&](Point p) { return ridge.at(p.x) - p.y; },
        [&](Point p) {
            const double near = (ridge.base - 430) / 160;  // the far hills lie in haze
            const double furrow =
                0.03 * near * std::sin(p.x * 0.11 + p.y * 0.23) * std::sin(p.y * 0.31);
            Colour green = between(ridge.top, ridge.bottom, (p.y - ridge.at(p.x)) / 190);
            green.red += furrow;
            green.green += furrow;
            return green;
        });
}

void paintFir(Image& image, Point foot, double height) {
    drawLine(image, foot, {foot.x, foot.y - height * 0.3}, height * 0.08, {0.30, 0.20, 0.13, 1});
    for (int tier = 0; tier < 4; ++tier) {
        const double top = foot.y - height * (1 - 0.2 * tier);
        const double bottom = top + height * 0.34;
        const double half = height * (0.11 + 0.06 * tier);
        fill(
            image, {foot.x - half, top, foot.x + half, bottom},
            [&](Point p) {
                const double edge = half * (p.y - top) / (bottom - top);
                return std::max(std::abs(p.x - foot.x) - edge, p.y - bottom);
            },
            [&](Point p) {
                return between({0.10, 0.30, 0.20, 1}, {0.22, 0.44, 0.26, 1},
                               0.5 + (p.x - foot.x) / (2 * half));
            });
    }
}

void paintFirs(Image& image) {
    // A fixed sequence that looks random; the trees stand on the third range of hills.
    unsigned state = 7;
    for (int i = 0; i < 46; ++i) {
        state = state * 1103515245U + 12345U;
        const double x = 15 + 27.5 * i + (state >> 16 & 15U);
        const double height = 24 + (state >> 20 & 31U);
        paintFir(image, {x, kRidges[2].at(x) + 6 + (state >> 8 & 7U)}, height);
    }
}

void paintHouse(Image& image, Point corner) {
    const auto at = [&](double x, double y) { return Point{corner.x + x, corner.y + y}; };
    const auto box = [&](double left, double top, double right, double bottom) {
        return Box{corner.x + left, corner.y + top, corner.x + right, corner.y + bottom};
    };
    fillBox(image, box(0, 0, 130, 84), {0.93, 0.87, 0.76, 1});
    const Point ridge = at(65, -62);
    fill(
        image, box(-16, -62, 146, 2),
        [&](Point p) {
            return std::max(std::abs(p.x - ridge.x) - 81 * (p.y - ridge.y) / 64,
                            p.y - corner.y - 2);
        },
        [&](Point p) {
            const bool seam = std::fmod(p.y - ridge.y, 8) < 1.6;
            return seam ? Colour{0.52, 0.16, 0.12, 1} : Colour{0.74, 0.25, 0.17, 1};
        });
    fillBox(image, box(54, 38, 80, 84), {0.36, 0.22, 0.14, 1});
    for (const double left : {14.0, 92.0}) {
        fillBox(image, box(left, 22, left + 26, 50), {0.98, 0.98, 0.96, 1});
        fillBox(image, box(left + 3, 25, left + 23, 47), {0.42, 0.62, 0.78, 1});
        drawLine(image, at(left + 13, 24), at(left + 13, 48), 2, {0.98, 0.98, 0.96, 1});
    }
}

/// A castle where the camera looks, fine enough to be worth zooming in.
void paintCastle(Image& image, Point foot) {
    const Colour stone{0.78, 0.72, 0.66, 1};
    const Colour shade{0.58, 0.53, 0.52, 1};
    const Colour slate{0.34, 0.26, 0.38, 1};
    const auto tower = [&](double x, double width, double height, bool pointed) {
        const Box box{foot.x + x - width / 2, foot.y - height, foot.x + x + width / 2, foot.y};
        fill(
            image, box, [&](Point p) { return rectangle(p, box); },
            [&](Point p) { return between(stone, shade, (p.x - box.left) / width); });
        for (double y = box.top + 6; y < foot.y - 8; y += 10)
            fillBox(image, {foot.x + x - 1, y, foot.x + x + 1, y + 4}, kInk);
        if (!pointed) {
            for (double left = box.left; left < box.right; left += 4)
                fillBox(image, {left, box.top - 3, left + 2, box.top}, shade);
            return;
        }
        const double top = box.top - 1.5 * width;
        fill(
            image, {box.left - 2, top, box.right + 2, box.top},
            [&](Point p) {
                return std::max(std::abs(p.x - foot.x - x) - (p.y - top) / 2.6, p.y - box.top);
            },
            slate);
        drawLine(image, {foot.x + x, top}, {foot.x + x, top - 9}, 1, kInk);
        fillBox(image, {foot.x + x, top - 9, foot.x + x + 8, top - 5}, {0.86, 0.16, 0.18, 1});
    };
    tower(0, 74, 22, false);
    tower(-36, 13, 36, true);
    tower(36, 13, 36, true);
    tower(4, 16, 54, true);
    tower(-16, 12, 34, false);
    fillEllipse(image, {foot.x - 4, foot.y}, 5, 9, kInk);
}

void paintMeadow(Image& image) {
    const std::array<Colour, 4> petals{{{0.96, 0.82, 0.20, 1},
                                        {0.90, 0.28, 0.34, 1},
                                        {0.96, 0.94, 0.96, 1},
                                        {0.62, 0.42, 0.84, 1}}};
    unsigned state = 99;
    for (int i = 0; i < 420; ++i) {
        state = state * 1103515245U + 12345U;
        const double x = state >> 12 & 2047U;
        state = state * 1103515245U + 12345U;
        const double depth = (state >> 16 & 255U) / 255.0;
        const Point centre{x * kWidth / 2048, 640 + depth * 230};
        fillCircle(image, centre, 1.6 + 3 * depth, petals[state >> 10 & 3U]);
    }
}

void paintClock(Image& image) {
    const Point c = kClockCentre;
    drawLine(image, {c.x, c.y + kClockRadius}, {c.x, 700}, 9, {0.22, 0.26, 0.30, 1});
    fillCircle(image, {c.x + 2, c.y + 3}, kClockRadius + 6, {0, 0, 0, 0.25});
    fillCircle(image, c, kClockRadius + 5, {0.20, 0.25, 0.30, 1});
    fillCircle(image, c, kClockRadius, {0.97, 0.97, 0.95, 1});
    const auto polar = [&](double turn, double radius) {
        return Point{c.x + radius * std::sin(2 * kPi * turn),
                     c.y - radius * std::cos(2 * kPi * turn)};
    };
    for (int minute = 0; minute < 60; ++minute) {
        const bool hour = minute % 5 == 0;
        drawLine(image, polar(minute / 60.0, kClockRadius - (hour ? 11 : 6)),
                 polar(minute / 60.0, kClockRadius - 3), hour ? 3.2 : 1.1, kInk);
    }
    drawLine(image, polar(0.68, 6), polar(0.18, 23), 5, kInk);  // ten past two
    drawLine(image, polar(0.667, 8), polar(0.167, 34), 3.4, kInk);
}

/// The seven bars of full and equal brightness, and a ramp of greys below them.
void paintBars(Image& image, const Box& box) {
    const std::array<Colour, 7> bars{{{0.92, 0.92, 0.92, 1},
                                      {0.88, 0.84, 0.10, 1},
                                      {0.10, 0.76, 0.80, 1},
                                      {0.12, 0.68, 0.20, 1},
                                      {0.74, 0.20, 0.68, 1},
                                      {0.80, 0.14, 0.14, 1},
                                      {0.14, 0.20, 0.74, 1}}};
    const double width = (box.right - box.left) / 7;
    const double split = box.top + 0.62 * (box.bottom - box.top);
    for (std::size_t i = 0; i < bars.size(); ++i) {
        const double left = box.left + width * static_cast<double>(i);
        fillBox(image, {left, box.top, left + width, split}, bars[i]);
    }
    for (int step = 0; step < 11; ++step) {
        const double grey = step / 10.0;
        const double left = box.left + (box.right - box.left) * step / 11;
        fillBox(image, {left, split, left + (box.right - box.left) / 11, box.bottom},
                {grey, grey, grey, 1});
    }
}

/// A star whose rays get finer towards the centre, and gratings of one to four pixels.
void paintResolutionChart(Image& image, const Box& box) {
    fillBox(image, box, {0.97, 0.97, 0.96, 1});
    const double radius = (box.bottom - box.top) / 2 - 3;
    const Point centre{box.left + radius + 4, (box.top + box.bottom) / 2};
    fill(
        image, box, [&](Point p) { return circle(p, centre, radius); },
        [&](Point p) {
            const double ray = std::sin(18 * std::atan2(p.y - centre.y, p.x - centre.x));
            const double edge = std::clamp(0.5 + ray * circle(p, centre, 0) / 18, 0.0, 1.0);
            return between(kInk, {0.97, 0.97, 0.96, 1}, edge);
        });
    double left = centre.x + radius + 8;
    for (const int pitch : {4, 3, 2, 1}) {
        for (double x = left; x < left + 12; x += 2 * pitch)
            fillBox(image, {std::floor(x), box.top + 5, std::floor(x) + pitch, box.bottom - 5},
                    kInk);
        left += 16;
    }
}

void paintTestChart(Image& image) {
    for (const double leg : {470.0, 664.0})
        drawLine(image, {leg, 640}, {leg + (leg < 500 ? -12 : 12), 712}, 7, {0.42, 0.28, 0.18, 1});
    fillBox(image, {444, 520, 702, 662}, {0, 0, 0, 0.22});
    fillBox(image, {440, 514, 698, 656}, {0.46, 0.31, 0.20, 1});
    fillBox(image, {447, 521, 691, 649}, kPaper);
    paintBars(image, {453, 527, 567, 643});
    paintResolutionChart(image, {573, 527, 685, 577});
    // Patches of the colours that people know: skin, leaf, sky, orange, violet, rose.
    const std::array<Colour, 6> patches{{{0.86, 0.64, 0.52, 1},
                                         {0.36, 0.50, 0.22, 1},
                                         {0.36, 0.52, 0.74, 1},
                                         {0.90, 0.52, 0.14, 1},
                                         {0.40, 0.28, 0.56, 1},
                                         {0.84, 0.40, 0.50, 1}}};
    for (std::size_t i = 0; i < patches.size(); ++i) {
        const double left = 573 + 38.0 * static_cast<double>(i % 3);
        const double top = i < 3 ? 583 : 614;
        fillBox(image, {left, top, left + 36, top + 29}, patches[i]);
    }
}

void paintFace(Image& image, Point c) {
    const Colour skin{0.91, 0.71, 0.58, 1};
    const Colour shade{0.82, 0.58, 0.46, 1};
    fillBox(image, {c.x - 20, c.y + 40, c.x + 20, c.y + 92}, shade);
    fill(
        image, {c.x - 56, c.y - 70, c.x + 56, c.y + 72},
        [&](Point p) { return ellipse(p, c, 54, 68); },
        [&](Point p) {
            return between(skin, shade, circle(p, {c.x - 16, c.y - 12}, 0) / 72 - 0.25);
        });
    for (const double side : {-1.0, 1.0}) {
        fillEllipse(image, {c.x + side * 20, c.y - 8}, 10, 6.5, {0.98, 0.98, 0.97, 1});
        fillCircle(image, {c.x + side * 20 + 1, c.y - 8}, 5.2, {0.24, 0.42, 0.46, 1});
        fillCircle(image, {c.x + side * 20 + 1, c.y - 8}, 2.4, kInk);
        fillCircle(image, {c.x + side * 20 + 2.6, c.y - 10}, 1.3, {1, 1, 1, 1});
        drawLine(image, {c.x + side * 10, c.y - 22}, {c.x + side * 30, c.y - 24}, 3.6,
                 {0.32, 0.18, 0.12, 1});
        fillCircle(image, {c.x + side * 30, c.y + 18}, 12, {0.92, 0.50, 0.46, 0.35});
    }
    drawLine(image, {c.x + 1, c.y - 2}, {c.x + 5, c.y + 15}, 3, shade);
    fill(
        image, {c.x - 20, c.y + 22, c.x + 20, c.y + 42},
        [&](Point p) {
            return std::max(circle(p, {c.x, c.y + 20}, 19), circle(p, {c.x, c.y + 6}, 23) * -1);
        },
        Colour{0.74, 0.26, 0.28, 1});
}

void paintPortrait(Image& image) {
    const Point c{842, 520};
    const Colour hair{0.34, 0.19, 0.12, 1};
    fillEllipse(image, {c.x, c.y - 6}, 66, 80, hair);
    fillEllipse(image, {c.x, c.y + 40}, 64, 66, hair);
    fill(
        image, {c.x - 104, c.y + 78, c.x + 104, kHeight},
        [&](Point p) {
            const bool shoulders = p.y < c.y + 170;
            return shoulders ? ellipse(p, {c.x, c.y + 170}, 100, 94) : std::abs(p.x - c.x) - 100;
        },
        [&](Point p) {
            const bool stripe = std::fmod(p.y, 16) < 6;
            return stripe ? Colour{0.95, 0.93, 0.88, 1} : Colour{0.20, 0.34, 0.56, 1};
        });
    paintFace(image, c);
    fill(
        image, {c.x - 60, c.y - 84, c.x + 60, c.y - 18},
        [&](Point p) {
            return std::max(ellipse(p, {c.x, c.y - 4}, 62, 78),
                            -ellipse(p, {c.x + 10, c.y + 16}, 62, 62));
        },
        [&](Point p) {
            const double strand = 0.5 + 0.5 * std::sin(p.x * 0.9 + p.y * 0.25);
            return between(hair, {0.50, 0.30, 0.18, 1}, 0.6 * strand);
        });
}

Image paintLandscape() {
    Image image(kWidth, kHeight);
    paintSky(image);
    for (std::size_t i = 0; i < 3; ++i) {
        paintRidge(image, kRidges[i]);
        if (i == 0)
            paintCastle(image, {640, 508});
    }
    paintFirs(image);
    paintHouse(image, {1040, 505});
    paintRidge(image, kRidges[3]);
    paintMeadow(image);
    paintClock(image);
    paintTestChart(image);
    paintPortrait(image);
    return image;
}

Image paintBalloon() {
    Image image(92, 132);
    const Point c{46, 46};
    const std::array<Colour, 3> gores{
        {{0.88, 0.20, 0.20, 1}, {0.98, 0.78, 0.18, 1}, {0.95, 0.95, 0.92, 1}}};
    for (const double side : {-1.0, 1.0})
        drawLine(image, {c.x + side * 20, 80}, {c.x + side * 8, 110}, 1.4, kInk);
    fill(
        image, {2, 2, 90, 102},
        [&](Point p) {
            const double narrow = p.y > c.y ? 1 - 0.55 * std::pow((p.y - c.y) / 54, 2) : 1;
            return std::hypot((p.x - c.x) / narrow, (p.y - c.y) * (p.y > c.y ? 0.8 : 1)) - 43;
        },
        [&](Point p) {
            const double across = std::clamp((p.x - c.x) / 44, -1.0, 1.0);
            const auto gore = static_cast<std::size_t>((std::asin(across) / kPi + 0.5) * 8.99);
            const double light = 1.08 - 0.42 * std::clamp(circle(p, {32, 30}, 0) / 80, 0.0, 1.0);
            const Colour& cloth = gores[gore % gores.size()];
            return Colour{std::min(1.0, cloth.red * light), std::min(1.0, cloth.green * light),
                          std::min(1.0, cloth.blue * light), 1};
        });
    fillBox(image, {36, 109, 56, 124}, {0.55, 0.36, 0.20, 1});
    fillBox(image, {36, 109, 56, 112}, {0.38, 0.24, 0.14, 1});
    return image;
}

Image paintCloud() {
    Image image(220, 84);
    struct Puff {
        Point centre;
        double radius;
    };
    const std::array<Puff, 6> puffs{{{{42, 56}, 20},
                                     {{74, 42}, 28},
                                     {{112, 36}, 32},
                                     {{148, 44}, 26},
                                     {{178, 57}, 18},
                                     {{108, 56}, 24}}};
    fill(
        image, {0, 0, 220, 84}, [](Point) { return -1.0; },
        [&](Point p) {
            double density = 0;
            for (const Puff& puff : puffs) {
                const double inside = -circle(p, puff.centre, puff.radius) / puff.radius;
                density = std::max(density, inside);
            }
            const Colour white{1, 1, 1, std::clamp(density * 2.6, 0.0, 0.92)};
            return between(white, {0.78, 0.82, 0.90, white.alpha}, (p.y - 34) / 46);
        });
    return image;
}

}  // namespace

const Image& landscape() {
    static const Image image = paintLandscape();
    return image;
}

const Image& balloon() {
    static const Image image = paintBalloon();
    return image;
}

const Image& cloud() {
    static const Image image = paintCloud();
    return image;
}

Image secondHand(double turn) {
    const auto size = static_cast<int>(2 * kClockRadius);
    Image image(size, size);
    const auto tip = [&](double radius) {
        return Point{kClockRadius + radius * std::sin(2 * kPi * turn),
                     kClockRadius - radius * std::cos(2 * kPi * turn)};
    };
    const Colour red{0.86, 0.12, 0.12, 1};
    drawLine(image, tip(-11), tip(37), 1.8, red);
    fillCircle(image, tip(0), 3.6, red);
    return image;
}

}  // namespace virtualcam
