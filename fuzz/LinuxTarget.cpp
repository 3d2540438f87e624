// The Linux back end on a kernel, a udev and a list of formats that say anything.

#include <fmt/format.h>
#include <linux/usb/video.h>
#include <linux/uvcvideo.h>
#include <linux/videodev2.h>
#include <sanitizer/lsan_interface.h>

#include <functional>
#include <set>
#include <utility>

#include "fuzz/Input.h"
#include "platform/MainLoop.h"
#include "platform/linux/ControlRequests.h"
#include "platform/linux/LinuxCapture.h"
#include "platform/linux/LinuxUsb.h"
#include "platform/linux/PreviewMode.h"
#include "platform/linux/VideoNode.h"

namespace {

std::function<void()> descriptorReady;

/// A node whose every answer comes from the input. What is no answer stays as it was given.
struct FuzzNode : platform::Ioctl {
    int call(unsigned long request, void* argument) override {
        static constexpr int results[] = {0, 0, 0, EINTR, EINVAL, EACCES, ENODEV, ERANGE};
        if (request == VIDIOC_G_EXT_CTRLS || request == VIDIOC_S_EXT_CTRLS) {
            const auto& all = *static_cast<v4l2_ext_controls*>(argument);
            for (auto& control : std::span(all.controls, all.count))
                control.value = input.number<std::int32_t>();
        } else if (request == UVCIOC_CTRL_QUERY) {
            const auto& query = *static_cast<uvc_xu_control_query*>(argument);
            input.fill({query.data, query.size});
        } else {
            input.fill({static_cast<std::uint8_t*>(argument), _IOC_SIZE(request)});
        }
        return input.oneOf(results);
    }
};

void sendAnyRequest() {
    static constexpr std::uint8_t codes[] = {UVC_SET_CUR,  UVC_GET_CUR, UVC_GET_MIN,
                                             UVC_GET_MAX,  UVC_GET_RES, UVC_GET_LEN,
                                             UVC_GET_INFO, UVC_GET_DEF, 0xFF};
    std::vector<std::uint8_t> data(input.below(12));
    input.fill(data);
    IOUSBDevRequest request;
    request.bRequest = input.oneOf(codes);
    request.bmRequestType = request.bRequest == UVC_SET_CUR ? 0x21 : 0xA1;
    request.wValue = static_cast<std::uint16_t>(input.below(20) << 8U);
    request.wIndex = static_cast<std::uint16_t>(input.below(5) << 8U);
    request.wLength = static_cast<std::uint16_t>(data.size());
    request.pData = input.seldom() ? nullptr : data.data();
    FuzzNode node;
    platform::performControlRequest(node, request);
    require(request.wLenDone <= request.wLength, "no more is done than was asked for");
    std::string card;
    platform::capturesVideo(node, card);
    require(card.size() <= sizeof(v4l2_capability::card), "a name ends with its field");
}

/// A mode as a driver may list it: with one size, several or a range, and any rate.
std::string anyMode() {
    static constexpr const char* kinds[] = {"video/x-raw", "image/jpeg", "video/x-h264",
                                            "video/x-raw(memory:DMABuf)", "video/x-bayer"};
    static constexpr const char* formats[] = {"YUY2", "ENCODED", "none", "{BGRx,YUY2}"};
    static constexpr const char* sizes[] = {"{}", "[{},{}]", "{{{},{}}}"};
    const auto size = [] {
        const int least = input.number<std::int16_t>();
        return fmt::format(fmt::runtime(input.oneOf(sizes)), least, least + 1 + input.byte());
    };
    return fmt::format("{},format={},width=(int){},height=(int){},framerate=(fraction){}/{};",
                       input.oneOf(kinds), input.oneOf(formats), size(), size(),
                       input.number<std::int32_t>(), 1 + input.byte());
}

void chooseAnyMode() {
    std::string text;
    do
        text += anyMode();
    while (input.below(4) != 0);
    const platform::GstCapsPtr offered(gst_caps_from_string(text.c_str()));
    if (!offered)
        return;
    const int most = 1 + input.byte() * 10;
    const auto mode = platform::choosePreviewMode(offered.get(), {most, most});
    require((mode.kind == nullptr) == !mode.caps, "a mode has a kind");
    require(!mode.caps || (gst_caps_is_fixed(mode.caps.get()) &&
                           gst_caps_is_subset(mode.caps.get(), offered.get())),
            "a mode is one of those offered");
}

/// Keeps a list of its own.
struct Listener : platform::CaptureListener {
    void arrived(std::shared_ptr<platform::CaptureDevice> device) override {
        require(known.insert(std::move(device)).second, "a device arrives once");
    }
    void left(std::shared_ptr<platform::CaptureDevice> device) override {
        require(known.erase(device) == 1, "what leaves was there");
    }
    std::set<std::shared_ptr<platform::CaptureDevice>> known;
};

void followDevices() {
    Listener listener;
    platform::LinuxCapture capture;
    capture.setListener(&listener);
    const auto first = capture.devices();
    listener.known = {first.begin(), first.end()};
    while (!input.atEnd() && descriptorReady)
        descriptorReady();
    const auto now = capture.devices();
    require(std::set(now.begin(), now.end()) == listener.known, "the list is what was told");
    for (const auto& device : now) {
        std::string error;
        require(!device->uniqueID().empty() && (device->open(error) || !error.empty()),
                "a device has an identifier, and opens or says why not");
        device->localizedName();
    }
}

void lookAtUsb() {
    std::vector<std::shared_ptr<platform::UsbInterface>> interfaces;
    for (const auto& device : platform::LinuxUsb().devices())
        device->interfaces(interfaces);
    for (const auto& interface : interfaces)
        interface->open();
}

}  // namespace

// The main loop is the toolkit's, which has no part in this.
// NOLINTNEXTLINE(performance-unnecessary-value-param): the task is the callee's in the real one
void platform::postToMainThread(std::function<void()> /*task*/) {}

std::unique_ptr<platform::DescriptorWatch> platform::watchReadable(int /*descriptor*/,
                                                                   std::function<void()> ready) {
    descriptorReady = std::move(ready);
    return nullptr;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool loaded = [] {
        setenv("GST_REGISTRY_DISABLE", "yes", 1);  // no plug-in is needed to choose a mode
        const __lsan::ScopedDisabler tables;       // GLib leaves them behind
        g_log_set_default_handler([](auto...) {}, nullptr);
        return platform::loadGStreamer().empty();
    }();
    require(loaded, "GStreamer loads");
    static constexpr void (*parts[])() = {sendAnyRequest, chooseAnyMode, followDevices, lookAtUsb};
    input.rest = {data, size};
    descriptorReady = nullptr;
    input.oneOf(parts)();
    return 0;
}
