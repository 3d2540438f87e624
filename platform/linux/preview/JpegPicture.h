#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/backend/CaptureBackend.h"

namespace platform {

/// Makes a picture of a JPEG image (ISO/IEC 10918-1) of a camera that has announced pictures of
/// size `announced`; a larger one is made to fit, down to half its size. It is decoded whenever it
/// is written. There is no `write` for what is no image, for one that is larger still, and for one
/// in several scans: those that cameras send have one (UVC 1.1, Motion-JPEG Payload), and a crafted
/// one could keep its painter busy for minutes.
VideoFrame makeJpegPicture(std::vector<std::uint8_t> image, const VideoLimits& announced);

/// The size in pixels that a JPEG image states; nothing for what is no image.
std::optional<VideoLimits> statedJpegSize(std::span<const std::uint8_t> image);

}  // namespace platform
