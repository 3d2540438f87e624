#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace platform {

/// Copies rows of 32-bit pixels, 0x..RRGGBB each, as `VideoFrame::write` promises them: opaque,
/// whatever their highest byte was. Rows start every `fromLine` and `toLine` bytes.
inline void copyOpaque(const std::byte* from, int fromLine, int width, int height, std::byte* to,
                       int toLine) {
    constexpr std::uint32_t opaque = 0xFF000000;
    for (int y = 0; y < height; ++y, from += fromLine, to += toLine) {
        const auto* row = reinterpret_cast<const std::uint32_t*>(from);
        std::transform(row, row + width, reinterpret_cast<std::uint32_t*>(to),
                       [](std::uint32_t pixel) { return pixel | opaque; });
    }
}

}  // namespace platform
