#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/backend/CaptureBackend.h"
#include "platform/linux/preview/GStreamer.h"

namespace platform {

class ClosingPreviews;

/// Where a preview's pictures come from.
struct PreviewOrigin {
    /// Makes the source element, with one pad; null when GStreamer lacks it. Called on the
    /// preview's thread.
    std::function<GstElement*()> makeElement;

    /// Says in a sentence why the origin can't be used now, or nothing. Called on the preview's
    /// thread, before there is a source element and after it has let go.
    std::function<std::string()> whyNotUsable;

    /// Names the camera: a preview of one that a stopped preview still holds waits for it.
    std::string camera = {};
};

/// Makes a preview of `origin`. Everything that may wait for the camera is done on its own thread,
/// which no call waits for: a stopped preview lets go of the camera as soon as the camera lets it.
/// Until it has, it is counted in `closing`, which all previews of the machine's cameras share.
std::unique_ptr<VideoSource> makePreview(PreviewOrigin origin,
                                         std::shared_ptr<ClosingPreviews> closing);

/// Makes a preview of the camera whose video4linux node is at `path`.
std::unique_ptr<VideoSource> openPreview(const std::string& path,
                                         std::shared_ptr<ClosingPreviews> closing);

}  // namespace platform
