#pragma once

#include "platform/backend/CaptureBackend.h"
#include "platform/linux/preview/GStreamer.h"

namespace platform {

class PreviewLink;
struct PreviewMode;
struct StreamKind;

/// Looks at a camera's pictures before a decoder does. Leaves out those that state a size for which
/// it should not make room: beyond twice the announced one, or 64 megapixels; and those that the
/// driver marks as damaged, before the decoder or, if others cannot be decoded without them, behind
/// it. On the thread of the pictures.
class PictureGuard {
  public:
    /// What is left out is told to `link`, which outlives the object.
    explicit PictureGuard(PreviewLink& link) : link_(link) {}

    /// Checks what comes from `pad` in this mode.
    void watch(GstPad* pad, const PreviewMode& mode);

    /// Delivers a picture that comes from the decoder, unless it is damaged; null: there is none.
    void take(GstSamplePtr decoded);

  private:
    bool isDamaged(const GstBuffer* decoded) const;
    bool admits(GstBuffer* buffer);
    bool isTooLarge(GstBuffer* buffer);

    PreviewLink& link_;
    const StreamKind* kind_ = nullptr;
    VideoLimits announced_;
    bool isTooLarge_ = false;                     // by what was stated last
    GstClockTime damaged_ = GST_CLOCK_TIME_NONE;  // the time of the latest that a decoder got
};

}  // namespace platform
