#include "virtualcam/scene/Painter.h"

namespace virtualcam {

Colour between(const Colour& first, const Colour& second, double part) {
    const double p = std::clamp(part, 0.0, 1.0);
    return {std::lerp(first.red, second.red, p), std::lerp(first.green, second.green, p),
            std::lerp(first.blue, second.blue, p)};
}

double Box::distance(Point p) const {
    return std::max({left - p.x, p.x - right, top - p.y, p.y - bottom});
}

Box Ellipse::box() const {
    return {centre.x - radiusX, centre.y - radiusY, centre.x + radiusX, centre.y + radiusY};
}

double Ellipse::distance(Point p) const {
    return (reach(p) - 1) * std::min(radiusX, radiusY);
}

double Ellipse::reach(Point p) const {
    return length((p.x - centre.x) / radiusX, (p.y - centre.y) / radiusY);
}

Box Line::box() const {
    return {std::min(from.x, to.x) - width, std::min(from.y, to.y) - width,
            std::max(from.x, to.x) + width, std::max(from.y, to.y) + width};
}

double Line::distance(Point p) const {
    const Point all{to.x - from.x, to.y - from.y};
    const double along = (p.x - from.x) * all.x + (p.y - from.y) * all.y;
    const double part = std::clamp(along / (all.x * all.x + all.y * all.y), 0.0, 1.0);
    return length(p.x - from.x - part * all.x, p.y - from.y - part * all.y) - width / 2;
}

void Painter::glow(const Ellipse& spot, const Colour& colour) {
    fill(spot, [&](Point p) {
        const double reach = std::min(spot.reach(p), 1.0);
        Colour faded = colour;
        faded.alpha *= std::pow(1 - reach * reach, 2);
        return faded;
    });
}

void Painter::lay(std::uint32_t& pixel, const Colour& colour, double cover) {
    const auto mixed = [&](unsigned shift, double value) {
        const auto under = static_cast<double>(pixel >> shift & 0xFFU);
        constexpr double half = 0.5;  // rounds faster than std::lround: nothing is below 0
        return static_cast<std::uint32_t>(std::lerp(under, 255 * value, colour.alpha * cover) +
                                          half)
               << shift;
    };
    pixel = mixed(16, colour.red) | mixed(8, colour.green) | mixed(0, colour.blue);
}

}  // namespace virtualcam
