#include "platform/linux/preview/Pipeline.h"

#include <fmt/format.h>
#include <gst/app/gstappsink.h>
#include <gst/base/gstbasesrc.h>
#include <gst/video/video.h>

#include <utility>

#include "platform/linux/preview/PreviewLink.h"
#include "platform/linux/preview/PreviewMode.h"
#include "platform/linux/preview/PreviewPicture.h"

namespace platform {
namespace {

GstFlowReturn takeSample(GstAppSink* from, gpointer guard) {
    static_cast<PictureGuard*>(guard)->take(GstSamplePtr(gst_app_sink_pull_sample(from)));
    return GST_FLOW_OK;
}

/// Takes each message on the thread that sends it: nobody reads the bus, where they would pile up.
GstBusSyncReply takeMessage(GstBus* /*bus*/, GstMessage* message, gpointer link) {
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
        GError* error = nullptr;
        gst_message_parse_error(message, &error, nullptr);
        const GErrorPtr owned(error);
        static_cast<PreviewLink*>(link)->fail(
            fmt::format("The preview has stopped: {}", error->message));
    } else if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_EOS) {
        static_cast<PreviewLink*>(link)->fail("The camera sends no more pictures.");
    }
    gst_message_unref(message);
    return GST_BUS_DROP;
}

/// The pool of a source's buffers, if it has one.
GstBufferPool* poolOf(GstElement* source) {
    return source != nullptr && GST_IS_BASE_SRC(source)
               ? gst_base_src_get_buffer_pool(GST_BASE_SRC(source))
               : nullptr;
}

/// Whether this is GStreamer 1.22.0, which is Debian 12's. When its v4l2src stops, it leaves the
/// pool of its buffers to those that still use them, and forgets its own reference to the pool
/// (gst_v4l2_object_stop). It is the first release that takes one there; 1.26.2, which is Debian
/// 13's, gives it back.
bool forgetsPools() {
    guint major = 0;
    guint minor = 0;
    guint micro = 0;
    guint nano = 0;
    gst_version(&major, &minor, &micro, &nano);
    return major == 1 && minor == 22 && micro == 0;
}

/// The pool would keep the element, and with it the camera's node open, until the program's end.
/// Once the pipeline is gone, nobody else but the caller has a reference.
void releaseForgotten(GstBufferPool* pool) {
    if (pool != nullptr && forgetsPools() &&
        g_str_equal(G_OBJECT_TYPE_NAME(pool), "GstV4l2BufferPool") &&
        !gst_buffer_pool_is_active(pool) && GST_OBJECT_REFCOUNT_VALUE(pool) == 2)
        gst_object_unref(pool);
}

}  // namespace

Pipeline::Pipeline(PreviewLink& link)
    : link_(link), guard_(link), pipeline_(gst_pipeline_new(nullptr)) {
    const GstBusPtr bus(gst_element_get_bus(pipeline_.get()));
    gst_bus_set_sync_handler(bus.get(), takeMessage, &link, nullptr);
}

Pipeline::~Pipeline() {
    const GstBufferPoolPtr pool(poolOf(source_));
    gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
    pipeline_.reset();
    releaseForgotten(pool.get());
}

void Pipeline::start(GstElement* source, const VideoLimits& limits) {
    last_ = source_ = source;
    gst_bin_add(GST_BIN(pipeline_.get()), source);
    if (!enter(GST_STATE_READY))
        return;
    const GstPadPtr pad(gst_element_get_static_pad(last_, "src"));
    const GstCapsPtr offered(gst_pad_query_caps(pad.get(), nullptr));
    const PreviewMode mode = choosePreviewMode(offered.get(), limits);
    if (mode.kind == nullptr) {
        link_.fail("The camera has no picture format that can be shown.");
        return;
    }
    guard_.watch(pad.get(), mode);
    if (!link_.isCut() && appendFilter(mode.caps.get()) && appendDecoding(mode, limits) &&
        appendSink(limits))
        enter(GST_STATE_PLAYING);
}

/// Appends an element, which the pipeline then owns.
GstElement* Pipeline::append(const char* name) {
    std::string failure;
    GstElement* element = makeElement(name, failure);
    if (element == nullptr) {
        link_.fail(std::move(failure));
        return nullptr;
    }
    gst_bin_add(GST_BIN(pipeline_.get()), element);
    if (!gst_element_link(last_, element)) {
        link_.fail(fmt::format("The camera's pictures don't fit {}.", name));
        return nullptr;
    }
    return last_ = element;
}

bool Pipeline::appendFilter(GstCaps* caps) {
    GstElement* filter = append("capsfilter");
    if (filter != nullptr)
        g_object_set(filter, "caps", caps, nullptr);
    return filter != nullptr;
}

/// Appends a decoder and a converter, unless the pictures can be read as they come.
bool Pipeline::appendDecoding(const PreviewMode& mode, const VideoLimits& limits) {
    const GstCapsPtr readable = readablePictures(limits);
    return gst_caps_can_intersect(mode.caps.get(), readable.get()) ||
           (appendDecoder(*mode.kind) && appendConverter());
}

bool Pipeline::appendDecoder(const StreamKind& kind) {
    if (kind.decoder == nullptr)
        return true;
    GstElement* decoder = append(kind.decoder);
    // Each thread that works on another picture would delay all by one.
    const char* const threads = "max-threads";
    if (decoder != nullptr &&
        g_object_class_find_property(G_OBJECT_GET_CLASS(decoder), threads) != nullptr)
        g_object_set(decoder, threads, 1, nullptr);
    return decoder != nullptr;
}

/// Without interpolating colours and without dithering, which can't be seen at this size and would
/// double the work.
bool Pipeline::appendConverter() {
    GstElement* converter = append("videoconvertscale");
    if (converter != nullptr)
        g_object_set(converter, "chroma-mode", GST_VIDEO_CHROMA_MODE_NONE, "dither",
                     GST_VIDEO_DITHER_NONE, nullptr);
    return converter != nullptr;
}

bool Pipeline::appendSink(const VideoLimits& limits) {
    const GstCapsPtr readable = readablePictures(limits);
    GstElement* sink = append("appsink");
    if (sink == nullptr)
        return false;
    // Only the latest picture is kept, and it is delivered as soon as it is there.
    g_object_set(sink, "caps", readable.get(), "max-buffers", 1U, "drop", TRUE, "sync", FALSE,
                 "enable-last-sample", FALSE, nullptr);
    GstAppSinkCallbacks callbacks{};
    callbacks.new_sample = takeSample;
    gst_app_sink_set_callbacks(GST_APP_SINK(sink), &callbacks, &guard_, nullptr);
    return true;
}

bool Pipeline::enter(GstState state) {
    const bool entered = gst_element_set_state(pipeline_.get(), state) != GST_STATE_CHANGE_FAILURE;
    // Most elements have told a better reason by now, and the link keeps the first.
    if (!entered)
        link_.fail("The preview can't be started.");
    return entered;
}

}  // namespace platform
