#include "platform/linux/preview/GStreamer.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace platform {
namespace {

/// Whether GStreamer is kept from looking at every plug-in there is and from its registry, the file
/// in which it notes what it has seen. It takes this from the environment, which nobody may write
/// once there are threads: it is done before the program starts.
const bool hasNoRegistry = setenv("GST_REGISTRY_DISABLE", "yes", 1) == 0;

/// Where an element of the preview comes from.
struct Origin {
    const char* element;
    const char* plugin;
    const char* package;  // of Debian
};

constexpr Origin origins[] = {
    {"appsink", "app", "gstreamer1.0-plugins-base"},
    {"avdec_h264", "libav", "gstreamer1.0-libav"},
    {"capsfilter", "coreelements", "libgstreamer1.0-0"},
    {"jpegdec", "jpeg", "gstreamer1.0-plugins-good"},
    {"v4l2src", "video4linux2", "gstreamer1.0-plugins-good"},
    {"videoconvertscale", "videoconvertscale", "gstreamer1.0-plugins-base"},
};

}  // namespace

std::string loadGStreamer() {
    static const std::string failure = [] {
        // Without GStreamer's handler for crashes while it loads its plug-ins.
        gst_segtrap_set_enabled(FALSE);
        // Nor with its scanner: a program, and none can be started by now.
        gst_registry_fork_set_enabled(FALSE);
        GError* error = nullptr;
        if (!hasNoRegistry)
            return std::string("GStreamer can't be loaded: there is no memory.");
        if (gst_init_check(nullptr, nullptr, &error))
            return std::string();
        const GErrorPtr owned(error);
        return fmt::format("GStreamer can't be loaded: {}",
                           error == nullptr ? "no reason given" : error->message);
    }();
    return failure;
}

std::string loadPlugin(const std::string& name) {
    GError* error = nullptr;
    const std::string path = fmt::format(QUELVO_GSTREAMER_PLUGINS "/libgst{}.so", name);
    const GstPluginPtr plugin(gst_plugin_load_file(path.c_str(), &error));
    const GErrorPtr owned(error);
    return plugin ? "" : error->message;
}

GstElement* makeElement(const std::string& name, std::string& failure) {
    const auto* origin = std::ranges::find(origins, name, &Origin::element);
    const std::string reason = loadPlugin(origin->plugin);
    GstElement* element =
        reason.empty() ? gst_element_factory_make(name.c_str(), nullptr) : nullptr;
    if (element == nullptr)
        failure =
            fmt::format("GStreamer's plug-in {}, in Debian's {}, can't be used: {}", origin->plugin,
                        origin->package, reason.empty() ? "it has no " + name : reason);
    return element;
}

}  // namespace platform
