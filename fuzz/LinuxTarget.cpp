// The Linux back end on a kernel and a udev that say anything.

#include <linux/uvcvideo.h>
#include <linux/videodev2.h>

#include <functional>

#include "fuzz/Input.h"
#include "platform/MainLoop.h"
#include "platform/UVC.h"
#include "platform/linux/controls/ControlRequests.h"
#include "platform/linux/devices/KeptNode.h"
#include "platform/linux/devices/LinuxCapture.h"
#include "platform/linux/devices/LinuxUsb.h"
#include "platform/linux/devices/VideoNode.h"
#include "platform/linux/preview/H264Size.h"
#include "platform/linux/preview/JpegPicture.h"
#include "platform/linux/preview/PreviewMode.h"
#include "tests/support/Pixels.h"

using namespace platform;

namespace {

std::function<void()> descriptorReady;

/// A node whose every answer comes from the input. What is no answer stays as it was given.
struct FuzzNode : Ioctl {
    int call(unsigned long request, void* argument) override {
        static constexpr int results[] = {0,      0,      0,      EINTR,    EINVAL,
                                          EACCES, ENODEV, ERANGE, ETIMEDOUT};
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
    static constexpr RequestCode codes[] = {SET_CUR, GET_CUR, GET_MIN,  GET_MAX,
                                            GET_RES, GET_LEN, GET_INFO, GET_DEF};
    std::vector<std::uint8_t> data(input.byte() % 12);
    input.fill(data);
    const RequestCode code = input.oneOf(codes);
    IOUSBDevRequest request{code == SET_CUR ? requestToInterface : requestFromInterface,
                            code,
                            static_cast<std::uint16_t>(input.byte() % 20 << 8U),
                            static_cast<std::uint16_t>(input.byte() % 5 << 8U),
                            static_cast<std::uint16_t>(data.size()),
                            input.seldom() ? nullptr : data.data()};
    FuzzNode node;
    performControlRequest(node, request);
    require(request.wLenDone <= request.wLength, "no more is done than was asked for");
    std::string card;
    capturesVideo(node, card);
    require(card.size() <= sizeof(v4l2_capability::card), "a name ends with its field");
}

struct Listener : CaptureListener {
    void arrived(std::shared_ptr<CaptureDevice> device) override {
        known.push_back(device);
        require(capture.devices() == known, "what arrives is listed once, behind the others");
    }
    void left(std::shared_ptr<CaptureDevice> device) override {
        require(std::erase(known, device) == 1, "what leaves was there");
        require(capture.devices() == known, "what has left is not listed");
    }
    KeptNode node;
    LinuxCapture capture{node};
    std::vector<std::shared_ptr<CaptureDevice>> known = capture.devices();
};

void followDevices() {
    Listener listener;
    listener.capture.setListener(&listener);
    while (!input.atEnd() && descriptorReady)
        descriptorReady();
    for (const auto& device : listener.known) {
        std::string error;
        require(!device->uniqueID().empty(), "a device has an identifier");
        require(device->open(error) || !error.empty(), "it opens or says why not");
        device->localizedName();
    }
}

void lookAtUsb() {
    std::vector<std::shared_ptr<UsbInterface>> interfaces;
    KeptNode node;
    const LinuxCapture capture(node);
    LinuxUsb usb(node, capture);
    for (const auto& device : usb.devices())
        device->interfaces(interfaces);
    for (const auto& interface : interfaces)
        interface->open();
}

/// Modes of any size and rate, in forms that are known or not.
void chooseMode() {
    static constexpr const char* forms[] = {"video/x-raw", "image/jpeg", "video/x-h264", "video/x"};
    static constexpr const char* layouts[] = {"YUY2", "ENCODED", "none"};
    static const std::string failure = loadGStreamer();
    require(failure.empty(), "GStreamer is there");
    const GstCapsPtr offered(gst_caps_new_empty());
    while (!input.atEnd())
        gst_caps_append_structure(
            offered.get(),
            gst_structure_new(input.oneOf(forms), "width", G_TYPE_INT, input.number<int>(),
                              "height", G_TYPE_INT, input.number<int>(), "framerate",
                              GST_TYPE_FRACTION, input.byte(), 1 + input.byte(), "format",
                              G_TYPE_STRING, input.oneOf(layouts), nullptr));
    const PreviewMode mode = choosePreviewMode(offered.get(), {640, 480});
    require(!mode.caps == (mode.kind == nullptr), "a mode has a form");
    require(!mode.caps || gst_caps_is_fixed(mode.caps.get()), "a mode leaves nothing open");
}

void readAnySize() {
    for (const auto& size : {statedH264Size(input.rest), statedJpegSize(input.rest)})
        require(!size || (size->width >= 0 && size->height >= 0), "a size is no less than nothing");
}

void showAnyImage() {
    const VideoLimits announced{input.byte(), input.byte()};
    const auto picture = makeJpegPicture({input.rest.begin(), input.rest.end()}, announced);
    if (!picture.write)
        return;
    require(picture.width <= announced.width && picture.height <= announced.height, "it fits");
    for (const std::uint32_t pixel : pixelsOf(picture))
        require(pixel >> 24U == 0xFF, "it is opaque");
}

}  // namespace

/// The main loop is the toolkit's, which has no part in this.
std::unique_ptr<DescriptorWatch> platform::watchReadable(int /*descriptor*/,
                                                         std::function<void()> ready) {
    descriptorReady = std::move(ready);
    return nullptr;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static constexpr void (*parts[])() = {sendAnyRequest, followDevices, lookAtUsb,
                                          showAnyImage,   chooseMode,    readAnySize};
    input.rest = {data, size};
    descriptorReady = nullptr;
    input.oneOf(parts)();
    return 0;
}
