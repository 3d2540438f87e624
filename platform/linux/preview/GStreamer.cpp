#include "platform/linux/preview/GStreamer.h"

#include <fmt/format.h>

namespace platform {

std::string loadGStreamer() {
    static const std::string failure = [] {
        // Without GStreamer's handler for crashes while it loads its plug-ins.
        gst_segtrap_set_enabled(FALSE);
        GError* error = nullptr;
        if (gst_init_check(nullptr, nullptr, &error))
            return std::string();
        const GErrorPtr owned(error);
        return fmt::format("GStreamer can't be loaded: {}",
                           error == nullptr ? "no reason given" : error->message);
    }();
    return failure;
}

}  // namespace platform
