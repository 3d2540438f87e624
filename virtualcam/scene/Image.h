#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace virtualcam {

/// A picture of pixels 0x00RRGGBB, row by row without gaps.
struct Image {
    Image() = default;
    Image(int columns, int rows)
        : width(columns),
          height(rows),
          pixels(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows)) {}

    std::uint32_t* row(int y) {
        return pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
    }

    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;
};

/// Blurs `image` as a lens does that is out of focus by `radius` pixels; with 0 it stays as it is.
void blur(Image& image, int radius);

/// Strengthens the fine detail by `amount`: with 0 the image stays as it is, -1 takes the detail
/// away.
void sharpen(Image& image, double amount);

}  // namespace virtualcam
