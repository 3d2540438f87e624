#include "virtualcam/scene/Image.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace virtualcam {
namespace {

using Channels = std::array<int, 4>;

Channels split(std::uint32_t pixel) {
    return {static_cast<int>(pixel >> 24), static_cast<int>((pixel >> 16) & 0xFFU),
            static_cast<int>((pixel >> 8) & 0xFFU), static_cast<int>(pixel & 0xFFU)};
}

std::uint32_t join(const Channels& channels) {
    std::uint32_t pixel = 0;
    for (const int channel : channels)
        pixel = pixel << 8 | static_cast<std::uint32_t>(std::clamp(channel, 0, 255));
    return pixel;
}

std::uint32_t pixelAt(const Image& image, int x, int y) {
    const bool inside = x >= 0 && y >= 0 && x < image.width && y < image.height;
    return inside ? image.row(y)[x] : 0;
}

/// Mixes two pixels; `part` of 256 of the second.
std::uint32_t mix(std::uint32_t first, std::uint32_t second, std::uint32_t part) {
    constexpr std::uint32_t kEven = 0x00FF00FF;
    const std::uint32_t rest = 256 - part;
    const std::uint32_t low = ((first & kEven) * rest + (second & kEven) * part) >> 8 & kEven;
    const std::uint32_t high =
        (((first >> 8) & kEven) * rest + ((second >> 8) & kEven) * part) & ~kEven;
    return low | high;
}

/// Replaces each of `count` pixels, `stride` apart, by the mean of those within `radius`. At the
/// ends the outermost pixel counts on.
void blurLine(std::uint32_t* line, int count, std::ptrdiff_t stride, int radius,
              std::vector<std::uint32_t>& copy) {
    copy.resize(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        copy[static_cast<std::size_t>(i)] = line[i * stride];
    const auto at = [&](int i) {
        return split(copy[static_cast<std::size_t>(std::clamp(i, 0, count - 1))]);
    };
    Channels sum{};
    const auto add = [&](const Channels& channels, int sign) {
        for (std::size_t c = 0; c < 4; ++c)
            sum[c] += sign * channels[c];
    };
    for (int i = -radius; i <= radius; ++i)
        add(at(i), 1);
    const int width = 2 * radius + 1;
    for (int i = 0; i < count; ++i) {
        line[i * stride] = join({(sum[0] + radius) / width, (sum[1] + radius) / width,
                                 (sum[2] + radius) / width, (sum[3] + radius) / width});
        add(at(i - radius), -1);
        add(at(i + radius + 1), 1);
    }
}

}  // namespace

Image resample(const Image& source, const Viewport& view, int width, int height) {
    Image result(width, height);
    for (int y = 0; y < height; ++y) {
        const double sourceY = view.top + (y + 0.5) / view.scale - 0.5;
        const int top = static_cast<int>(std::floor(sourceY));
        const auto below = static_cast<std::uint32_t>((sourceY - top) * 256);
        for (int x = 0; x < width; ++x) {
            const double sourceX = view.left + (x + 0.5) / view.scale - 0.5;
            const int left = static_cast<int>(std::floor(sourceX));
            const auto right = static_cast<std::uint32_t>((sourceX - left) * 256);
            const std::uint32_t upper =
                mix(pixelAt(source, left, top), pixelAt(source, left + 1, top), right);
            const std::uint32_t lower =
                mix(pixelAt(source, left, top + 1), pixelAt(source, left + 1, top + 1), right);
            result.row(y)[x] = mix(upper, lower, below);
        }
    }
    return result;
}

void blur(Image& image, int radius) {
    if (radius <= 0)
        return;
    std::vector<std::uint32_t> copy;
    // Two passes of a box come close to the round spot of a lens.
    for (int pass = 0; pass < 2; ++pass) {
        for (int y = 0; y < image.height; ++y)
            blurLine(image.row(y), image.width, 1, radius, copy);
        for (int x = 0; x < image.width; ++x)
            blurLine(image.pixels.data() + x, image.height, image.width, radius, copy);
    }
}

void sharpen(Image& image, double amount) {
    if (amount == 0)
        return;
    const int factor = static_cast<int>(std::lround(amount * 256));
    Image soft = image;
    blur(soft, 1);
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        const Channels sharp = split(image.pixels[i]);
        const Channels smooth = split(soft.pixels[i]);
        Channels result{};
        // A colour never exceeds its alpha; the background's alpha stays full.
        result[0] = std::clamp(sharp[0] + (sharp[0] - smooth[0]) * factor / 256, 0, 255);
        for (std::size_t c = 1; c < 4; ++c)
            result[c] = std::clamp(sharp[c] + (sharp[c] - smooth[c]) * factor / 256, 0, result[0]);
        image.pixels[i] = join(result);
    }
}

void blend(Image& target, const Image& sprite, int x, int y) {
    const int left = std::max(0, -x);
    const int right = std::min(sprite.width, target.width - x);
    const int bottom = std::min(sprite.height, target.height - y);
    for (int row = std::max(0, -y); row < bottom; ++row) {
        const std::uint32_t* from = sprite.row(row);
        std::uint32_t* to = target.row(y + row) + x;
        for (int column = left; column < right; ++column) {
            const std::uint32_t over = from[column];
            // What shows through of the target, out of 256.
            const std::uint32_t through = 256 - (over >> 24) - (over >> 31);
            if (through != 256)
                to[column] = over + mix(0, to[column], through);
        }
    }
}

}  // namespace virtualcam
