#pragma once

#include "platform/backend/CaptureBackend.h"
#include "platform/linux/preview/GStreamer.h"
#include "platform/linux/preview/PictureGuard.h"

namespace platform {

struct StreamKind;

/// The elements of one preview, which hand its pictures to a link; taken down with the object,
/// after which no picture comes. GStreamer is loaded by then.
class Pipeline {
  public:
    /// What goes wrong is told to `link`, which outlives the object.
    explicit Pipeline(PreviewLink& link);
    Pipeline(const Pipeline&) = delete;
    Pipeline& operator=(const Pipeline&) = delete;
    ~Pipeline();

    /// Shows what `source` delivers at its one pad, in pictures within `limits`. Takes the source
    /// over. To be called once.
    void start(GstElement* source, const VideoLimits& limits);

  private:
    GstElement* append(const char* name);
    bool appendFilter(GstCaps* caps);
    bool appendDecoding(const PreviewMode& mode, const VideoLimits& limits);
    bool appendDecoder(const StreamKind& kind);
    bool appendConverter();
    bool appendSink(const VideoLimits& limits);
    bool enter(GstState state);

    PreviewLink& link_;
    PictureGuard guard_;
    GstElementPtr pipeline_;
    GstElement* source_ = nullptr;  // owned by the pipeline, as is the next
    GstElement* last_ = nullptr;    // the end of what is linked
};

}  // namespace platform
