#pragma once

#include <algorithm>
#include <cmath>
#include <concepts>

#include "virtualcam/scene/Image.h"

namespace virtualcam {

/// A colour with its cover, each from 0 to 1.
struct Colour {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
};

/// Returns the colour between two; 0 is the first, 1 the second.
inline Colour between(const Colour& first, const Colour& second, double part) {
    const double p = std::clamp(part, 0.0, 1.0);
    return {std::lerp(first.red, second.red, p), std::lerp(first.green, second.green, p),
            std::lerp(first.blue, second.blue, p), std::lerp(first.alpha, second.alpha, p)};
}

struct Point {
    double x = 0;
    double y = 0;
};

/// The part of an image that a shape can touch, in pixels.
struct Box {
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;
};

// Distances to shapes, in pixels: negative inside.

inline double circle(Point p, Point centre, double radius) {
    return std::hypot(p.x - centre.x, p.y - centre.y) - radius;
}

inline double ellipse(Point p, Point centre, double radiusX, double radiusY) {
    const double scale = std::min(radiusX, radiusY);
    return (std::hypot((p.x - centre.x) / radiusX, (p.y - centre.y) / radiusY) - 1) * scale;
}

inline double rectangle(Point p, const Box& box) {
    return std::max(std::max(box.left - p.x, p.x - box.right),
                    std::max(box.top - p.y, p.y - box.bottom));
}

/// A line with round ends.
inline double stroke(Point p, Point from, Point to, double width) {
    const double dx = to.x - from.x;
    const double dy = to.y - from.y;
    const double along = ((p.x - from.x) * dx + (p.y - from.y) * dy) / (dx * dx + dy * dy);
    const double t = std::clamp(along, 0.0, 1.0);
    return circle(p, {from.x + t * dx, from.y + t * dy}, width / 2);
}

/// Lays one colour over a pixel of premultiplied colour.
std::uint32_t lay(std::uint32_t pixel, const Colour& colour);

/// Fills where `distance(Point)` is negative with `colour(Point)`; the edge is smooth.
template <std::invocable<Point> Distance, std::invocable<Point> Paint>
void fill(Image& image, const Box& box, Distance distance, Paint colour) {
    const int bottom = std::min(image.height, static_cast<int>(std::ceil(box.bottom)) + 1);
    const int right = std::min(image.width, static_cast<int>(std::ceil(box.right)) + 1);
    for (int y = std::max(0, static_cast<int>(box.top) - 1); y < bottom; ++y)
        for (int x = std::max(0, static_cast<int>(box.left) - 1); x < right; ++x) {
            const Point point{x + 0.5, y + 0.5};
            const double cover = std::clamp(0.5 - distance(point), 0.0, 1.0);
            if (cover == 0)
                continue;
            Colour paint = colour(point);
            paint.alpha *= cover;
            image.row(y)[x] = lay(image.row(y)[x], paint);
        }
}

template <std::invocable<Point> Distance>
void fill(Image& image, const Box& box, Distance distance, const Colour& colour) {
    fill(image, box, distance, [&](Point) { return colour; });
}

void fillCircle(Image& image, Point centre, double radius, const Colour& colour);
void fillEllipse(Image& image, Point centre, double radiusX, double radiusY, const Colour& colour);
void fillBox(Image& image, const Box& box, const Colour& colour);
void drawLine(Image& image, Point from, Point to, double width, const Colour& colour);

}  // namespace virtualcam
