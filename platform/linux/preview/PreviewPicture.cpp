#include "platform/linux/preview/PreviewPicture.h"

#include <gst/video/video.h>
#include <libyuv/convert_argb.h>

#include <memory>
#include <utility>
#include <vector>

#include "platform/backend/OpaqueRows.h"
#include "platform/linux/preview/JpegPicture.h"

namespace platform {
namespace {

/// A sample that is mapped for reading for as long as anyone shows it.
class MappedSample {
  public:
    explicit MappedSample(GstSamplePtr sample) : sample_(std::move(sample)) {
        GstVideoInfo info;
        const GstCaps* caps = gst_sample_get_caps(sample_.get());
        GstBuffer* buffer = gst_sample_get_buffer(sample_.get());
        mapped_ = caps != nullptr && buffer != nullptr && gst_video_info_from_caps(&info, caps) &&
                  gst_video_frame_map(&frame_, &info, buffer, GST_MAP_READ);
    }
    MappedSample(const MappedSample&) = delete;
    MappedSample& operator=(const MappedSample&) = delete;
    ~MappedSample() {
        if (mapped_)
            gst_video_frame_unmap(&frame_);
    }

    bool isMapped() const { return mapped_; }
    int width() const { return GST_VIDEO_FRAME_WIDTH(&frame_); }
    int height() const { return GST_VIDEO_FRAME_HEIGHT(&frame_); }

    void write(std::byte* pixels, int bytesPerLine) const {
        auto* target = reinterpret_cast<std::uint8_t*>(pixels);
        switch (GST_VIDEO_FRAME_FORMAT(&frame_)) {
            case GST_VIDEO_FORMAT_I420:
                return writeFrom(libyuv::I420ToARGBMatrix, target, bytesPerLine);
            case GST_VIDEO_FORMAT_Y42B:
                return writeFrom(libyuv::I422ToARGBMatrix, target, bytesPerLine);
            default:  // BGRx, or BGRA: a camera's picture is opaque all the same
                copyOpaque(reinterpret_cast<const std::byte*>(plane(0)), stride(0), width(),
                           height(), pixels, bytesPerLine);
        }
    }

  private:
    template <class Conversion>
    void writeFrom(Conversion convert, std::uint8_t* target, int bytesPerLine) const {
        convert(plane(0), stride(0), plane(1), stride(1), plane(2), stride(2), target, bytesPerLine,
                &colours(), width(), height());
    }

    /// How the camera has made luma and chroma of red, green and blue.
    const libyuv::YuvConstants& colours() const {
        const GstVideoColorimetry& made = frame_.info.colorimetry;
        const bool full = made.range == GST_VIDEO_COLOR_RANGE_0_255;
        if (made.matrix == GST_VIDEO_COLOR_MATRIX_BT709)
            return full ? libyuv::kYuvF709Constants : libyuv::kYuvH709Constants;
        if (made.matrix == GST_VIDEO_COLOR_MATRIX_BT2020)
            return full ? libyuv::kYuvV2020Constants : libyuv::kYuv2020Constants;
        return full ? libyuv::kYuvJPEGConstants : libyuv::kYuvI601Constants;
    }

    const std::uint8_t* plane(unsigned number) const {
        return static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame_, number));
    }
    int stride(unsigned number) const { return GST_VIDEO_FRAME_PLANE_STRIDE(&frame_, number); }

    GstSamplePtr sample_;
    GstVideoFrame frame_{};
    bool mapped_ = false;
};

/// Takes a picture out of a driver's own memory: it may be shown for long, and the driver wants its
/// buffers back.
GstSamplePtr inOwnMemory(GstSamplePtr sample) {
    GstBuffer* buffer = gst_sample_get_buffer(sample.get());
    if (gst_buffer_n_memory(buffer) == 0 ||
        gst_memory_is_type(gst_buffer_peek_memory(buffer, 0), GST_ALLOCATOR_SYSMEM))
        return sample;
    const GstBufferPtr copy(gst_buffer_copy_deep(buffer));
    return GstSamplePtr(
        gst_sample_new(copy.get(), gst_sample_get_caps(sample.get()), nullptr, nullptr));
}

VideoFrame makeRawPicture(GstSamplePtr sample) {
    const auto mapped = std::make_shared<MappedSample>(inOwnMemory(std::move(sample)));
    if (!mapped->isMapped())
        return {};
    return {mapped->width(), mapped->height(),
            [mapped](std::byte* pixels, int bytesPerLine) { mapped->write(pixels, bytesPerLine); }};
}

/// The data is copied: it may be shown for long as well, and is short.
VideoFrame makePictureOf(GstBuffer* jpeg, const GstStructure* form) {
    VideoLimits announced;
    gst_structure_get(form, "width", G_TYPE_INT, &announced.width, "height", G_TYPE_INT,
                      &announced.height, nullptr);
    std::vector<std::uint8_t> image(gst_buffer_get_size(jpeg));
    gst_buffer_extract(jpeg, 0, image.data(), image.size());
    return makeJpegPicture(std::move(image), announced);
}

}  // namespace

GstCapsPtr readablePictures(const VideoLimits& limits) {
    GstCapsPtr caps(gst_caps_from_string("video/x-raw,format={I420,Y42B,BGRx,BGRA}; image/jpeg"));
    gst_caps_set_simple(caps.get(), "pixel-aspect-ratio", GST_TYPE_FRACTION, 1, 1, "width",
                        GST_TYPE_INT_RANGE, 1, limits.width, "height", GST_TYPE_INT_RANGE, 1,
                        limits.height, nullptr);
    return caps;
}

VideoFrame makePicture(GstSamplePtr sample) {
    const GstCaps* caps = gst_sample_get_caps(sample.get());
    GstBuffer* buffer = gst_sample_get_buffer(sample.get());
    if (caps == nullptr || buffer == nullptr)
        return {};
    const GstStructure* form = gst_caps_get_structure(caps, 0);
    return gst_structure_has_name(form, "image/jpeg") ? makePictureOf(buffer, form)
                                                      : makeRawPicture(std::move(sample));
}

}  // namespace platform
