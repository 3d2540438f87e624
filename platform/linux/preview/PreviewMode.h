#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "platform/backend/CaptureBackend.h"
#include "platform/linux/preview/GStreamer.h"

namespace platform {

/// A form in which cameras send pictures, and what makes plain pictures of it.
struct StreamKind {
    using SizeReader = std::optional<VideoLimits> (*)(std::span<const std::uint8_t>);

    const char* mediaType = nullptr;
    const char* decoder = nullptr;    ///< a GStreamer element; null: none needed
    bool picturesStandAlone = true;   ///< whether others can be decoded without it
    SizeReader statedSize = nullptr;  ///< reads a picture's own size; null: it states none
};

/// A camera mode for a preview.
struct PreviewMode {
    GstCapsPtr caps;                   ///< null: there is no mode that can be shown
    const StreamKind* kind = nullptr;  ///< how its pictures come
};

/// Chooses from what a camera offers, of the modes in which motion is smooth if there are any: the
/// largest one within `limits`, otherwise the smallest of all, and among equals the one with the
/// least work to decode.
PreviewMode choosePreviewMode(const GstCaps* offered, const VideoLimits& limits);

}  // namespace platform
