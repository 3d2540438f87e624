#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/backend/CaptureBackend.h"
#include "platform/linux/preview/GStreamer.h"

namespace platform {

class ClosingPreviews;
class VideoNode;
struct NodeFacts;

/// Where a preview's pictures come from.
struct PreviewOrigin {
    /// Makes the source element, with one pad. On failure returns null and says why in `failure`,
    /// in a sentence. Called on the preview's thread.
    std::function<GstElement*(std::string& failure)> makeElement;

    /// Opens the camera in `held`, or says in a sentence why it can't be used now. While it is
    /// held, no other camera takes its place. Called on the preview's thread, before there is a
    /// source element and after it has let go.
    std::function<std::string(VideoNode& held)> hold;

    /// Names the camera: a preview of one that a stopped preview still holds waits for it.
    std::string camera = {};

    /// How long no picture may come before that is told.
    std::chrono::milliseconds patience = std::chrono::seconds(5);
};

/// Makes a preview of `origin`. Everything that may wait for the camera is done on its own thread,
/// which no call waits for: a stopped preview lets go of the camera as soon as the camera lets it.
/// Until it has, it is counted in `closing`, which all previews of the machine's cameras share.
std::unique_ptr<VideoSource> makePreview(PreviewOrigin origin,
                                         std::shared_ptr<ClosingPreviews> closing);

/// Makes a preview of a camera that was listed, and of no other that has come to its place since.
std::unique_ptr<VideoSource> openPreview(const NodeFacts& camera,
                                         std::shared_ptr<ClosingPreviews> closing);

}  // namespace platform
