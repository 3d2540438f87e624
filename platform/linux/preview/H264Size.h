#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "platform/backend/CaptureBackend.h"

namespace platform {

/// The size in pixels, in whole macroblocks, that H.264 pictures state in a byte stream (ITU-T
/// H.264, annex B); the larger of each side when they state several. Nothing when they state none:
/// a stream does so only where a group of pictures starts.
std::optional<VideoLimits> statedH264Size(std::span<const std::uint8_t> stream);

}  // namespace platform
