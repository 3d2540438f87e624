#include "platform/linux/preview/PictureGuard.h"

#include <cstdint>
#include <optional>
#include <span>
#include <utility>

#include "platform/linux/preview/H264Size.h"
#include "platform/linux/preview/JpegPicture.h"
#include "platform/linux/preview/PreviewLink.h"
#include "platform/linux/preview/PreviewMode.h"
#include "platform/linux/preview/PreviewPicture.h"

namespace platform {
namespace {

constexpr std::int64_t mostPixels = 64'000'000;

bool isMarked(const GstBuffer* buffer) {
    return GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_CORRUPTED);
}

/// What the picture says of its size, if it does.
std::optional<VideoLimits> statedSize(StreamKind::SizeReader reader, GstBuffer* buffer) {
    GstMapInfo data;
    if (reader == nullptr || !gst_buffer_map(buffer, &data, GST_MAP_READ))
        return std::nullopt;
    const auto size = reader({data.data, data.size});
    gst_buffer_unmap(buffer, &data);
    return size;
}

}  // namespace

void PictureGuard::watch(GstPad* pad, const PreviewMode& mode) {
    kind_ = mode.kind;
    gst_structure_get(gst_caps_get_structure(mode.caps.get(), 0), "width", G_TYPE_INT,
                      &announced_.width, "height", G_TYPE_INT, &announced_.height, nullptr);
    const auto check = [](GstPad* /*pad*/, GstPadProbeInfo* info, gpointer guard) {
        return static_cast<PictureGuard*>(guard)->admits(GST_PAD_PROBE_INFO_BUFFER(info))
                   ? GST_PAD_PROBE_OK
                   : GST_PAD_PROBE_DROP;
    };
    gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, check, this, nullptr);
}

void PictureGuard::take(GstSamplePtr decoded) {
    const GstBuffer* buffer = decoded ? gst_sample_get_buffer(decoded.get()) : nullptr;
    if (buffer == nullptr)
        return;
    VideoFrame picture;
    if (!isDamaged(buffer))
        picture = makePicture(std::move(decoded));
    if (picture.write)
        link_.deliver(std::move(picture));
    else
        link_.leaveOut(PreviewLink::damaged);
}

bool PictureGuard::isDamaged(const GstBuffer* decoded) const {
    return isMarked(decoded) ||
           (GST_BUFFER_PTS_IS_VALID(decoded) && GST_BUFFER_PTS(decoded) == damaged_);
}

bool PictureGuard::admits(GstBuffer* buffer) {
    if (isTooLarge(buffer)) {
        link_.leaveOut("a picture far larger than announced");
        return false;
    }
    if (!isMarked(buffer))
        return true;
    if (kind_->picturesStandAlone) {
        link_.leaveOut(PreviewLink::damaged);
        return false;
    }
    // The decoder does not pass the mark on, but the time.
    damaged_ = GST_BUFFER_PTS(buffer);
    return true;
}

bool PictureGuard::isTooLarge(GstBuffer* buffer) {
    if (const auto size = statedSize(kind_->statedSize, buffer))
        isTooLarge_ = size->width > 2 * announced_.width || size->height > 2 * announced_.height ||
                      std::int64_t{size->width} * size->height > mostPixels;
    return isTooLarge_;
}

}  // namespace platform
