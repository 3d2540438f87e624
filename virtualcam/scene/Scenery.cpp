#include "virtualcam/scene/Scenery.h"

#include <array>
#include <initializer_list>
#include <numbers>

namespace virtualcam {
namespace {

constexpr double pi = std::numbers::pi;
constexpr double right = 1280;  // the landscape's edges; the others are at 0
constexpr double bottom = 880;

constexpr Colour ink{0.10, 0.11, 0.14};
constexpr Colour paper{0.97, 0.97, 0.95};

void paintSky(Painter& painter) {
    constexpr Colour high{0.16, 0.38, 0.70};
    constexpr Colour middle{0.50, 0.72, 0.90};
    constexpr Colour low{0.98, 0.86, 0.70};
    painter.fill(Box{0, 0, right, bottom}, [&](Point p) {
        return p.y < 330 ? between(high, middle, p.y / 330)
                         : between(middle, low, (p.y - 330) / 180);
    });
    constexpr Point sun{742, 268};
    painter.glow({sun, 190, 190}, {1, 0.97, 0.90, 0.6});
    painter.fill(Ellipse{sun, 30, 30}, Colour{1, 0.98, 0.86});
    // Each cloud is some puffs beside each other.
    for (const Point cloud : {Point{120, 170}, {430, 262}, {560, 120}, {900, 292}, {1130, 150}})
        for (const Ellipse& puff :
             {Ellipse{{0, 8}, 46, 26}, {{34, -4}, 48, 42}, {{80, -8}, 58, 48}, {{126, 6}, 56, 32}})
            painter.glow(
                {{cloud.x + puff.centre.x, cloud.y + puff.centre.y}, puff.radiusX, puff.radiusY},
                {1, 1, 1, 0.85});
}

/// One range of hills: its ridge is a sum of two waves.
struct Ridge {
    double base;
    double height;
    double wave;  // units of the landscape
    double phase;
    Colour top;
    Colour foot;

    Box box() const { return {0, base - height, right, bottom}; }

    double distance(Point p) const {
        if (p.y > base + height)
            return -height;  // below the whole ridge there is no need to know how far
        const double t = 2 * pi * (p.x / wave) + phase;
        return base - height * (0.65 * std::sin(t) + 0.35 * std::sin(2.3 * t)) - p.y;
    }
};

void paintHills(Painter& painter) {
    for (const Ridge& ridge : {Ridge{440, 46, 520, 0.4, {0.56, 0.66, 0.78}, {0.74, 0.76, 0.78}},
                               Ridge{485, 30, 430, 2.1, {0.36, 0.52, 0.56}, {0.52, 0.64, 0.58}},
                               Ridge{530, 24, 610, 4.4, {0.24, 0.46, 0.30}, {0.38, 0.58, 0.34}},
                               Ridge{588, 16, 760, 1.2, {0.34, 0.56, 0.24}, {0.18, 0.36, 0.16}}})
        painter.fill(ridge, [&](Point p) {
            return between(ridge.top, ridge.foot, (p.y - ridge.base) / 190);
        });
}

/// The colour bars of a television test picture, from white to blue, and a ramp of greys below.
void paintBars(Painter& painter, Point corner) {
    for (int bar = 0; bar < 7; ++bar) {
        const double left = corner.x + 20 * bar;
        const auto part = [bar](int without) { return (bar & without) == 0 ? 0.86 : 0.14; };
        painter.fill(Box{left, corner.y, left + 20, corner.y + 110},
                     Colour{part(2), part(4), part(1)});
    }
    for (int step = 0; step < 10; ++step) {
        const double left = corner.x + 14 * step;
        const double grey = step / 9.0;
        painter.fill(Box{left, corner.y + 116, left + 14, corner.y + 172},
                     Colour{grey, grey, grey});
    }
}

/// A star whose rays get finer towards the centre.
void paintStar(Painter& painter, const Ellipse& star) {
    painter.fill(star, [&](Point p) {
        const double ray = std::sin(18 * std::atan2(p.y - star.centre.y, p.x - star.centre.x));
        return between(ink, paper, 0.5 + ray * star.reach(p) * star.radiusX / 18);
    });
}

void paintTestChart(Painter& painter) {
    constexpr Colour wood{0.46, 0.31, 0.20};
    for (const double leg : {430.0, 670.0})
        painter.fill(Line{{leg, 580}, {leg + (leg < 500 ? -16 : 16), 700}, 8}, wood);
    painter.fill(Box{388, 388, 716, 604}, Colour{0, 0, 0, 0.2});  // its shadow
    painter.fill(Box{384, 382, 712, 598}, wood);
    painter.fill(Box{392, 390, 704, 590}, paper);
    paintBars(painter, {402, 404});
    paintStar(painter, {{624, 464}, 60, 60});
    // The colours that people know: skin, leaf, sky, orange.
    constexpr std::array<Colour, 4> known{
        {{0.86, 0.64, 0.52}, {0.36, 0.50, 0.22}, {0.36, 0.52, 0.74}, {0.90, 0.52, 0.14}}};
    double x = 556;
    for (const Colour& colour : known) {
        painter.fill(Box{x, 536, x + 32, 576}, colour);
        x += 35;
    }
}

constexpr Colour skin{0.91, 0.71, 0.58};
constexpr Colour shade{0.82, 0.58, 0.46};
constexpr Colour hair{0.34, 0.19, 0.12};
constexpr Colour lips{0.74, 0.26, 0.28};

void paintFace(Painter& painter, Point c) {
    const Ellipse face{c, 54, 68};
    painter.fill(face, [&](Point p) {
        return between(skin, shade, length(p.x - c.x + 16, p.y - c.y + 12) / 72 - 0.25);
    });
    for (const double side : {-1.0, 1.0}) {
        const Point eye{c.x + side * 20, c.y - 8};
        painter.fill(Ellipse{eye, 10, 6.5}, paper);
        painter.fill(Ellipse{eye, 5.2, 5.2}, Colour{0.24, 0.42, 0.46});
        painter.fill(Ellipse{eye, 2.4, 2.4}, ink);
        painter.fill(Line{{c.x + side * 10, c.y - 24}, {c.x + side * 30, c.y - 23}, 3.6}, hair);
        painter.glow({{c.x + side * 30, c.y + 18}, 17, 17}, {0.92, 0.44, 0.42, 0.35});
    }
    painter.fill(Line{{c.x + 1, c.y - 2}, {c.x + 5, c.y + 15}, 3}, shade);
    painter.fill(Crescent{{{c.x, c.y + 20}, 19, 19}, {{c.x, c.y + 6}, 23, 23}}, lips);
}

void paintPortrait(Painter& painter) {
    constexpr Point c{842, 520};
    painter.fill(Ellipse{{c.x, c.y - 6}, 66, 80}, hair);
    painter.fill(Ellipse{{c.x, c.y + 40}, 64, 66}, hair);
    const auto jumper = [](Point p) {
        return std::fmod(p.y, 16) < 6 ? Colour{0.95, 0.93, 0.88} : Colour{0.20, 0.34, 0.56};
    };
    painter.fill(Ellipse{{c.x, c.y + 170}, 100, 94}, jumper);
    painter.fill(Box{c.x - 100, c.y + 170, c.x + 100, bottom}, jumper);
    painter.fill(Box{c.x - 20, c.y + 40, c.x + 20, c.y + 84}, shade);
    paintFace(painter, c);
    painter.fill(Crescent{{{c.x, c.y - 4}, 62, 78}, {{c.x + 10, c.y + 16}, 62, 62}}, hair);
}

}  // namespace

void paintScenery(Painter& painter) {
    paintSky(painter);
    paintHills(painter);
    paintTestChart(painter);
    paintPortrait(painter);
}

void paintBalloon(Painter& painter, double seconds) {
    // To and fro within what the camera sees at first, once a minute.
    const Point c{640 - 240 * std::cos(2 * pi * seconds / 60), 290 + 14 * std::sin(0.5 * seconds)};
    for (const double side : {-1.0, 1.0})
        painter.fill(Line{{c.x + side * 24, c.y + 36}, {c.x + side * 8, c.y + 66}, 1.4}, ink);
    painter.fill(Ellipse{c, 43, 48}, [&](Point p) {
        constexpr Colour red{0.88, 0.20, 0.20};
        constexpr Colour yellow{0.98, 0.80, 0.25};
        const double across = std::clamp((p.x - c.x) / 43, -1.0, 1.0);
        return between(red, yellow, 0.5 + 4 * std::sin(8 * std::asin(across)));
    });
    painter.glow({{c.x - 14, c.y - 16}, 30, 32}, {1, 1, 1, 0.4});
    painter.fill(Box{c.x - 10, c.y + 63, c.x + 10, c.y + 78}, Colour{0.55, 0.36, 0.20});
}

}  // namespace virtualcam
