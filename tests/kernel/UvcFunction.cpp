#include "tests/kernel/UvcFunction.h"

#include <endian.h>
#include <fmt/format.h>
#include <linux/usb/video.h>

#include <QByteArray>
#include <algorithm>
#include <cerrno>

namespace usbip {
namespace {

using Clock = std::chrono::steady_clock;

// The camera streams uncompressed YUY2 in one size, 153600 bytes a picture. Ten a second: the
// machines that run this are emulated, and slow.
constexpr unsigned kWidth = 320;
constexpr unsigned kHeight = 240;
constexpr std::chrono::milliseconds kInterval{100};

/// The answers to GET_DESCRIPTOR (USB 2.0, 9.6; UVC 1.1, 3) in hexadecimal digits; each descriptor
/// begins with its length. None: "". The models differ in their names and in the lens.
std::string descriptor(const virtualcam::CameraModel& model, unsigned typeAndIndex) {
    const bool hasLens = model.controls.size() == virtualcam::studioControls().size();
    std::string name = fmt::format("{:02x}03", 2 + 2 * model.name.size());
    for (const char letter : model.name)  // all are ASCII
        name += fmt::format("{:02x}00", letter);
    switch (typeAndIndex) {
        case USB_DT_DEVICE << 8:  // USB 2.0, several functions, name 1, one configuration
            return fmt::format("12 01 0002 ef 02 01 40 {:04x} {:04x} 0001 00 01 00 01",
                               htobe16(model.vendorID), htobe16(model.productID));
        case USB_DT_CONFIG << 8:
            return fmt::format(
                "09 02 c800 02 01 00 80 fa"                     // 200 bytes, two interfaces
                "08 0b 00 02 0e 03 00 00"                       // that belong together
                "09 04 00 00 00 0e 01 00 00"                    // interface 0: video control
                "0d 24 01 1001 5100 006cdc02 01 01"             // UVC 1.1, 81 bytes, streams on 1
                "12 24 02 01 0102 00 00 0000 0000 0000 03 {}"   // 1: the camera terminal
                "0c 24 05 03 01 0000 02 7f17 00 00"             // 3: the processing unit, after 1
                "1d 24 06 10 7a215e0c93d44b688f30a65d1be74299"  // 16: the vendor's unit, whose
                "0e 01 03 04 607fc203 00"                       // id is no other's, after 3
                "09 24 03 04 0101 00 10 00"                     // 4: the output, after 16
                "09 04 01 00 01 0e 02 00 00"                    // interface 1: video streaming
                "0e 24 01 01 4d00 81 00 04 00 00 00 01 00"      // 77 bytes, from 4
                "1b 24 04 01 01 5955593200001000800000aa00389b71 10 01 00 00 00 00"  // YUY2
                "1e 24 05 01 00 4001 f000 0080bb00 0080bb00 00580200 40420f00 01 40420f00"
                "06 24 0d 01 01 04"     // colours of BT.601
                "07 05 81 02 0002 00",  // endpoint 1, in, bulk
                hasLens ? "2a0a02" : "0a0000");
        case USB_DT_STRING << 8:
            return "04 03 0904";  // the language of the texts
        case USB_DT_STRING << 8 | 1:
            return name;
        default:
            return {};
    }
}

Bytes fromHex(const std::string& digits) {
    const QByteArray bytes = QByteArray::fromHex(QByteArray::fromStdString(digits));
    return {bytes.begin(), bytes.end()};
}

// The one way to stream, which every limit equals (UVC 1.1, table 4-47): format 1, frame 1, each
// picture with its header as one payload.
constexpr const char* kNegotiated =
    "0000 01 01 40420f00 0000 0000 0000 0000 0000 00580200 02580200 00000000 00 00 00 00";

}  // namespace

IOReturn UvcFunction::control(const usb_ctrlrequest& setup, Bytes& data) {
    const std::uint16_t value = le16toh(setup.wValue);
    const std::uint16_t index = le16toh(setup.wIndex);
    const auto length = static_cast<std::uint16_t>(data.size());
    const bool in = (setup.bRequestType & USB_DIR_IN) != 0;
    const bool toClass = (setup.bRequestType & USB_TYPE_MASK) == USB_TYPE_CLASS;
    if (toClass && (index & 0xFF) == 0) {
        IOUSBDevRequest request{
            setup.bRequestType, setup.bRequest, value, index, length, data.data(), 0};
        const IOReturn status = camera_->controlRequest(request);
        data.resize(in ? request.wLenDone : length);
        return status;
    }
    if (toClass && in)
        data = fromHex(kNegotiated);
    else if (toClass && value >> 8 == UVC_VS_COMMIT_CONTROL)
        sent_ = picture_.size();  // a stream starts with a whole picture
    else if (in && setup.bRequest == USB_REQ_GET_DESCRIPTOR)
        data = fromHex(descriptor(camera_->model(), value));
    data.resize(std::min<std::size_t>(data.size(), length));
    return data.empty() && length != 0 ? EPIPE : 0;
}

int UvcFunction::pause() const {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(due_ - Clock::now());
    return sent_ < picture_.size() ? 0 : std::max(0, static_cast<int>(left.count()));
}

/// A grey ramp from dark to bright that wanders a little, and turns round with the horizontal flip.
/// The virtual camera's own scene takes an emulated machine longer than the host waits for it.
void UvcFunction::draw() {
    const bool flipped = camera_->nextPicture().flipHorizontal != 0;
    picture_ = {2, static_cast<std::uint8_t>(UVC_STREAM_EOH | UVC_STREAM_EOF |
                                             ++pictures_ % 2 * UVC_STREAM_FID)};
    for (unsigned i = 0; i < kWidth * kHeight; ++i) {
        const unsigned along = flipped ? kWidth - 1 - i % kWidth : i % kWidth;
        const unsigned grey = 20 + along * 180 / kWidth + pictures_ % 20;
        picture_.insert(picture_.end(), {static_cast<std::uint8_t>(grey), 128});
    }
    sent_ = 0;
    due_ = Clock::now() + kInterval;
}

Bytes UvcFunction::payload(std::size_t room) {
    if (sent_ == picture_.size())
        draw();
    const auto from = picture_.begin() + static_cast<std::ptrdiff_t>(sent_);
    sent_ = std::min(sent_ + room, picture_.size());
    return {from, picture_.begin() + static_cast<std::ptrdiff_t>(sent_)};
}

}  // namespace usbip
