#include "virtualcam/scene/Painter.h"

namespace virtualcam {

std::uint32_t lay(std::uint32_t pixel, const Colour& colour) {
    const auto channel = [&](unsigned shift, double value) {
        const double under = static_cast<double>((pixel >> shift) & 0xFFU) * (1 - colour.alpha);
        const double result = under + value * colour.alpha * 255;
        return static_cast<std::uint32_t>(std::clamp(result + 0.5, 0.0, 255.0)) << shift;
    };
    return channel(24, 1) | channel(16, colour.red) | channel(8, colour.green) |
           channel(0, colour.blue);
}

void fillCircle(Image& image, Point centre, double radius, const Colour& colour) {
    fillEllipse(image, centre, radius, radius, colour);
}

void fillEllipse(Image& image, Point centre, double radiusX, double radiusY, const Colour& colour) {
    fill(
        image, {centre.x - radiusX, centre.y - radiusY, centre.x + radiusX, centre.y + radiusY},
        [&](Point p) { return ellipse(p, centre, radiusX, radiusY); }, colour);
}

void fillBox(Image& image, const Box& box, const Colour& colour) {
    fill(
        image, box, [&](Point p) { return rectangle(p, box); }, colour);
}

void drawLine(Image& image, Point from, Point to, double width, const Colour& colour) {
    const auto [left, right] = std::minmax(from.x, to.x);
    const auto [top, bottom] = std::minmax(from.y, to.y);
    fill(
        image, {left - width, top - width, right + width, bottom + width},
        [&](Point p) { return stroke(p, from, to, width); }, colour);
}

}  // namespace virtualcam
