#pragma once

#include <algorithm>
#include <cmath>
#include <concepts>
#include <cstdint>

#include "virtualcam/scene/Image.h"

namespace virtualcam {

/// A place in the landscape; y grows downwards.
struct Point {
    double x = 0;
    double y = 0;
};

/// The length of a way that goes `dx` to the side and `dy` down.
inline double length(double dx, double dy) {
    return std::sqrt(dx * dx + dy * dy);  // here std::hypot would be slow, and no more exact
}

/// A colour and how much of it covers what is below, each from 0 to 1. It is a paint too: one that
/// is the same everywhere.
struct Colour {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    const Colour& operator()(Point /*at*/) const { return *this; }
};

/// Returns the colour between two; 0 is the first, 1 the second.
Colour between(const Colour& first, const Colour& second, double part);

// Shapes. Each tells a box that it fits in, and about how far a point is from its edge, negative
// inside.

struct Box {
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;

    const Box& box() const { return *this; }
    double distance(Point p) const;
};

struct Ellipse {
    Point centre;
    double radiusX = 0;
    double radiusY = 0;

    Box box() const;
    double distance(Point p) const;

    /// How far `p` is from the centre: 1 at the edge.
    double reach(Point p) const;
};

/// What is in one ellipse but not in the other.
struct Crescent {
    Ellipse whole;
    Ellipse bite;

    Box box() const { return whole.box(); }
    double distance(Point p) const { return std::max(whole.distance(p), -bite.distance(p)); }
};

/// A line with round ends.
struct Line {
    Point from;
    Point to;
    double width = 0;

    Box box() const;
    double distance(Point p) const;
};

/// Which part of the landscape an image shows: the point at its upper left corner, and how many
/// pixels there are for one unit of the landscape.
struct Viewport {
    double left = 0;
    double top = 0;
    double scale = 1;

    bool operator==(const Viewport&) const = default;
};

/// Paints shapes of the landscape on an image that shows a part of it.
class Painter {
  public:
    /// The edges of all shapes fade over `softness` pixels. `image` outlives the painter.
    Painter(Image& image, const Viewport& view, double softness)
        : image_(image), view_(view), softness_(softness) {}

    /// Fills `shape` with `paint`, a colour for each point.
    template <typename Shape, std::invocable<Point> Paint>
    void fill(const Shape& shape, const Paint& paint) {
        const auto pixel = [&](double at, double origin, double margin, int size) {
            return std::clamp(static_cast<int>((at - origin) * view_.scale + margin), 0, size);
        };
        const Box box = shape.box();
        const int left = pixel(box.left, view_.left, -softness_, image_.width);
        const int right = pixel(box.right, view_.left, 1 + softness_, image_.width);
        const int bottom = pixel(box.bottom, view_.top, 1 + softness_, image_.height);
        for (int y = pixel(box.top, view_.top, -softness_, image_.height); y < bottom; ++y)
            for (int x = left; x < right; ++x) {
                const Point p{view_.left + (x + 0.5) / view_.scale,
                              view_.top + (y + 0.5) / view_.scale};
                const double cover = 0.5 - shape.distance(p) * view_.scale / softness_;
                if (cover > 0)
                    lay(image_.row(y)[x], paint(p), std::min(cover, 1.0));
            }
    }

    /// Paints a spot that fades from its centre to nothing at its edge.
    void glow(const Ellipse& spot, const Colour& colour);

  private:
    /// Lays a colour over a pixel, as far as the shape covers it.
    static void lay(std::uint32_t& pixel, const Colour& colour, double cover);

    Image& image_;
    Viewport view_;
    double softness_;
};

}  // namespace virtualcam
