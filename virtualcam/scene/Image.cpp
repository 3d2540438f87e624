#include "virtualcam/scene/Image.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace virtualcam {
namespace {

using Channels = std::array<int, 3>;

Channels split(std::uint32_t pixel) {
    const auto channel = [pixel](int bits) { return static_cast<int>(pixel >> bits & 0xFFU); };
    return {channel(16), channel(8), channel(0)};
}

std::uint32_t join(const Channels& channels) {
    std::uint32_t pixel = 0;
    for (const int channel : channels)
        pixel = pixel << 8 | static_cast<std::uint32_t>(std::clamp(channel, 0, 255));
    return pixel;
}

/// Replaces each of `count` pixels, `stride` apart, by the mean of those within `radius`. Beyond
/// the ends, the pixel at the end counts again and again.
void blurLine(std::uint32_t* line, int count, std::ptrdiff_t stride, int radius,
              std::vector<Channels>& copy) {
    copy.clear();
    for (int i = -radius; i <= count + radius; ++i)
        copy.push_back(split(line[std::clamp(i, 0, count - 1) * stride]));
    const int width = 2 * radius + 1;
    Channels sum{radius, radius, radius};  // so that the division rounds
    const auto add = [&sum](const Channels& channels, int sign) {
        for (std::size_t c = 0; c < sum.size(); ++c)
            sum[c] += sign * channels[c];
    };
    const Channels* first = copy.data();
    for (int i = 0; i < width; ++i)
        add(first[i], 1);
    for (int i = 0; i < count; ++i, ++first) {
        line[i * stride] = join({sum[0] / width, sum[1] / width, sum[2] / width});
        add(first[0], -1);
        add(first[width], 1);
    }
}

}  // namespace

void blur(Image& image, int radius) {
    if (radius == 0)
        return;
    std::vector<Channels> copy;
    // Two passes of a box come close to the round spot of a lens.
    for (int pass = 0; pass < 2; ++pass) {
        for (int y = 0; y < image.height; ++y)
            blurLine(image.row(y), image.width, 1, radius, copy);
        for (int x = 0; x < image.width; ++x)
            blurLine(image.row(0) + x, image.height, image.width, radius, copy);
    }
}

void sharpen(Image& image, double amount) {
    if (amount == 0)
        return;
    const int factor = static_cast<int>(std::lround(amount * 256));
    Image soft = image;
    blur(soft, 1);
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        Channels channels = split(image.pixels[i]);
        const Channels smooth = split(soft.pixels[i]);
        for (std::size_t c = 0; c < channels.size(); ++c)
            channels[c] += (channels[c] - smooth[c]) * factor / 256;
        image.pixels[i] = join(channels);
    }
}

}  // namespace virtualcam
