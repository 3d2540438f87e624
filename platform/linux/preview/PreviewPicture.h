#pragma once

#include "platform/backend/CaptureBackend.h"
#include "platform/linux/preview/GStreamer.h"

namespace platform {

/// The formats that `makePicture` reads: JPEG, and the raw ones that decoders produce, or into
/// which the others can be converted by hardly more than a copy.
GstCapsPtr readablePictures(const VideoLimits& limits);

/// Makes a picture of a sample in a readable form; it has no `write` when the sample is broken.
VideoFrame makePicture(GstSamplePtr sample);

}  // namespace platform
