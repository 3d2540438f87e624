#pragma once

#include "platform/backend/CaptureBackend.h"
#include "platform/linux/preview/GStreamer.h"

namespace platform {

/// What `makePicture` reads: JPEG as it comes, and the raw forms in which nearly all other pictures
/// are at hand without a conversion, or with one that is only a copy.
GstCapsPtr readablePictures(const VideoLimits& limits);

/// Makes a picture of a sample in a readable form; it has no `write` when the sample is broken.
VideoFrame makePicture(GstSamplePtr sample);

}  // namespace platform
