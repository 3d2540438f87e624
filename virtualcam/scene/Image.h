#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace virtualcam {

/// A picture of 32-bit pixels 0xAARRGGBB, the colours multiplied by the alpha.
struct Image {
    Image() = default;
    Image(int columns, int rows)
        : width(columns),
          height(rows),
          pixels(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows)) {}

    std::uint32_t* row(int y) { return pixels.data() + offset(y); }
    const std::uint32_t* row(int y) const { return pixels.data() + offset(y); }

    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;

  private:
    std::size_t offset(int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
    }
};

/// What part of an image is shown: the image's coordinates of the upper left corner, and how many
/// pixels of the result there are for one of the image.
struct Viewport {
    double left = 0;
    double top = 0;
    double scale = 1;

    bool operator==(const Viewport&) const = default;
};

/// Returns a picture of `size` pixels that shows `source` through `view`, smoothly interpolated;
/// outside of the source it is transparent.
Image resample(const Image& source, const Viewport& view, int width, int height);

/// Blurs `image` as a lens does that is out of focus by `radius` pixels.
void blur(Image& image, int radius);

/// Strengthens the fine detail by `amount`: 0 leaves the image, -1 takes the detail away.
void sharpen(Image& image, double amount);

/// Lays `sprite` over `target`, its upper left corner at (x, y); what does not fit is cut off.
void blend(Image& target, const Image& sprite, int x, int y);

}  // namespace virtualcam
