#pragma once

#include <cstdint>
#include <vector>

#include "platform/backend/CaptureBackend.h"

/// A picture's pixels, 0xFFRRGGBB each, row by row without gaps.
inline std::vector<std::uint32_t> pixelsOf(const platform::VideoFrame& frame) {
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(frame.width * frame.height));
    frame.write(reinterpret_cast<std::byte*>(pixels.data()), frame.width * 4);
    return pixels;
}
