#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/backend/CaptureBackend.h"
#include "platform/linux/GStreamer.h"

namespace platform {

/// Where a preview's pictures come from.
struct PreviewOrigin {
    /// Makes the source element, with one pad; null when GStreamer lacks it. Called on the
    /// preview's thread.
    std::function<GstElement*()> makeElement;

    /// Says in a sentence why the origin can't be used now, or nothing. Called on the preview's
    /// thread, after the source element has let go of it.
    std::function<std::string()> whyNotUsable;
};

/// Makes a preview of `origin`. Everything that may wait for the camera is done on its own thread.
std::unique_ptr<VideoSource> makePreview(PreviewOrigin origin);

/// Makes a preview of the camera whose video4linux node is at `path`.
std::unique_ptr<VideoSource> openPreview(const std::string& path);

}  // namespace platform
