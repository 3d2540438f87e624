#include "platform/linux/preview/PreviewMode.h"

#include <gst/video/video.h>

#include <compare>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/linux/preview/H264Size.h"
#include "platform/linux/preview/JpegPicture.h"

namespace platform {
namespace {

constexpr int wantedRate = 30;  // pictures per second
constexpr int smoothRate = 24;
constexpr int usableRate = 10;

// The kinds that take the least work to decode come first.
constexpr StreamKind kinds[] = {
    {"video/x-raw", nullptr, true},
    {"image/jpeg", "jpegdec", true, statedJpegSize},
    {"video/x-h264", "avdec_h264", false, statedH264Size},
};

/// How well a mode suits. The first field in which two modes differ decides between them.
struct Merit {
    bool smooth = false;
    bool usable = false;
    bool within = false;
    std::int64_t area = 0;  // negative for a mode beyond the limits, of which the smallest is best
    std::ptrdiff_t ease = 0;
    double rate = 0;

    // The check mistakes the 0 in the compiler's own comparison for a null pointer.
    auto operator<=>(const Merit&) const = default;  // NOLINT(modernize-use-nullptr)
};

/// Whether the converter can read the pictures.
bool isKnownFormat(const GstStructure* structure, const StreamKind& kind) {
    if (&kind != std::begin(kinds))
        return true;
    const char* format = gst_structure_get_string(structure, "format");
    const GstVideoFormat known =
        format == nullptr ? GST_VIDEO_FORMAT_UNKNOWN : gst_video_format_from_string(format);
    return known != GST_VIDEO_FORMAT_UNKNOWN && known != GST_VIDEO_FORMAT_ENCODED;
}

const StreamKind* kindOf(const GstStructure* structure) {
    for (const StreamKind& kind : kinds)
        if (gst_structure_has_name(structure, kind.mediaType))
            return &kind;
    return nullptr;
}

/// Settles on one size, rate and format where `structure` leaves a choice.
void settle(GstStructure* structure, const VideoLimits& limits) {
    const std::pair<const char*, int> sizes[] = {{"width", limits.width},
                                                 {"height", limits.height}};
    for (const auto& [field, wanted] : sizes)
        if (gst_structure_has_field(structure, field))
            gst_structure_fixate_field_nearest_int(structure, field, wanted);
    if (gst_structure_has_field(structure, "framerate"))
        gst_structure_fixate_field_nearest_fraction(structure, "framerate", wantedRate, 1);
    if (gst_structure_has_field(structure, "format"))
        gst_structure_fixate_field(structure, "format");
}

std::optional<Merit> meritOf(const GstStructure* structure, const StreamKind& kind,
                             const VideoLimits& limits) {
    int width = 0;
    int height = 0;
    if (!gst_structure_get_int(structure, "width", &width) ||
        !gst_structure_get_int(structure, "height", &height) || width < 1 || height < 1)
        return std::nullopt;
    int pictures = 0;
    int seconds = 1;
    gst_structure_get_fraction(structure, "framerate", &pictures, &seconds);
    const double rate = seconds == 0 ? 0.0 : static_cast<double>(pictures) / seconds;
    const bool within = width <= limits.width && height <= limits.height;
    const std::int64_t area = std::int64_t{width} * height;
    return Merit{rate >= smoothRate,    rate >= usableRate,        within,
                 within ? area : -area, std::begin(kinds) - &kind, rate};
}

}  // namespace

PreviewMode choosePreviewMode(const GstCaps* offered, const VideoLimits& limits) {
    GstStructurePtr best;
    const StreamKind* bestKind = nullptr;
    Merit bestMerit;
    for (guint i = 0; i < gst_caps_get_size(offered); ++i) {
        const GstStructure* offer = gst_caps_get_structure(offered, i);
        const StreamKind* kind = kindOf(offer);
        // What is offered in special memory, or interlaced, is offered in plain form as well.
        if (kind == nullptr || !gst_caps_features_is_equal(gst_caps_get_features(offered, i),
                                                           GST_CAPS_FEATURES_MEMORY_SYSTEM_MEMORY))
            continue;
        GstStructurePtr candidate(gst_structure_copy(offer));
        settle(candidate.get(), limits);
        const auto merit = meritOf(candidate.get(), *kind, limits);
        if (!merit || !isKnownFormat(candidate.get(), *kind) || (best && *merit <= bestMerit))
            continue;
        best = std::move(candidate);
        bestKind = kind;
        bestMerit = *merit;
    }
    if (!best)
        return {};
    return {GstCapsPtr(gst_caps_new_full(best.release(), nullptr)), bestKind};
}

}  // namespace platform
