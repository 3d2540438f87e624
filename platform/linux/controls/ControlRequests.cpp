#include "platform/linux/controls/ControlRequests.h"

#include <linux/usb/video.h>
#include <linux/uvcvideo.h>
#include <linux/videodev2.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <span>

#include "platform/linux/controls/ControlRows.h"

namespace platform {
namespace {

constexpr std::uint8_t toDevice = 0x21;    // class request to an interface (USB 2.0, 9.3.1)
constexpr std::uint8_t fromDevice = 0xA1;  // class request from an interface
constexpr std::size_t largestRow = 8;      // bytes of the longest standard control

using Bytes = std::span<std::uint8_t>;
using Description = v4l2_query_ext_ctrl;
using RowBytes = std::array<std::uint8_t, largestRow>;

Bytes dataOf(const IOUSBDevRequest& request) {
    return {static_cast<std::uint8_t*>(request.pData), request.wLength};
}

void reply(IOUSBDevRequest& request, std::span<const std::uint8_t> answer) {
    const std::size_t count = std::min<std::size_t>(answer.size(), request.wLength);
    std::copy_n(answer.begin(), count, dataOf(request).begin());
    request.wLenDone = static_cast<std::uint32_t>(count);
}

Bytes fieldOf(const ControlRow& row, std::size_t field, Bytes bytes) {
    return bytes.subspan(field * row.width, row.width);
}

IOReturn queryExtension(Ioctl& node, const IOUSBDevRequest& request, Bytes data) {
    uvc_xu_control_query query{};
    query.unit = static_cast<std::uint8_t>(request.wIndex >> 8);
    query.selector = static_cast<std::uint8_t>(request.wValue >> 8);
    query.query = request.bRequest;
    query.size = static_cast<std::uint16_t>(data.size());
    query.data = data.data();
    return callUninterrupted(node, UVCIOC_CTRL_QUERY, &query);
}

/// The driver takes only the exact length: 2 bytes of a length, 1 of the capabilities, otherwise
/// the control's own. The caller's room may have any size, so the first two get room of their own.
IOReturn performExtensionRequest(Ioctl& node, IOUSBDevRequest& request) {
    RowBytes own{};
    const bool isLength = request.bRequest == UVC_GET_LEN;
    if (isLength || request.bRequest == UVC_GET_INFO) {
        const Bytes answer = Bytes(own).first(isLength ? 2 : 1);
        const IOReturn status = queryExtension(node, request, answer);
        if (status == kIOReturnSuccess)
            reply(request, answer);
        return status;
    }
    const IOReturn status = queryExtension(node, request, dataOf(request));
    if (status == kIOReturnSuccess)
        request.wLenDone = request.wLength;
    return status;
}

/// Reads or writes all controls of a row in one call, so that no half of them is ever alone.
IOReturn exchangeCurrent(Ioctl& node, const ControlRow& row, unsigned long call,
                         std::array<v4l2_ext_control, 2>& controls) {
    for (std::size_t i = 0; i < row.fields(); ++i)
        controls[i].id = row.ids[i];
    v4l2_ext_controls all{};
    all.which = V4L2_CTRL_WHICH_CUR_VAL;
    all.count = static_cast<std::uint32_t>(row.fields());
    all.controls = controls.data();
    return callUninterrupted(node, call, &all);
}

IOReturn setCurrent(Ioctl& node, const ControlRow& row, IOUSBDevRequest& request) {
    if (request.wLength != row.size())
        return ENOBUFS;
    std::array<v4l2_ext_control, 2> controls{};
    for (std::size_t i = 0; i < row.fields(); ++i) {
        std::int32_t value = 0;
        const IOReturn status = fieldToV4l2(row, fieldOf(row, i, dataOf(request)), value);
        if (status != kIOReturnSuccess)
            return status;
        controls[i].value = value;
    }
    const IOReturn status = exchangeCurrent(node, row, VIDIOC_S_EXT_CTRLS, controls);
    if (status == kIOReturnSuccess)
        request.wLenDone = request.wLength;
    return status;
}

IOReturn getCurrent(Ioctl& node, const ControlRow& row, Bytes answer) {
    std::array<v4l2_ext_control, 2> controls{};
    IOReturn status = exchangeCurrent(node, row, VIDIOC_G_EXT_CTRLS, controls);
    for (std::size_t i = 0; i < row.fields() && status == kIOReturnSuccess; ++i)
        status = v4l2ToField(row, controls[i].value, fieldOf(row, i, answer));
    return status;
}

IOReturn describe(Ioctl& node, std::uint32_t id, Description& control) {
    control = {};
    control.id = id;
    const IOReturn status = callUninterrupted(node, VIDIOC_QUERY_EXT_CTRL, &control);
    const bool disabled = (control.flags & V4L2_CTRL_FLAG_DISABLED) != 0;
    return status == kIOReturnSuccess && disabled ? EINVAL : status;
}

/// A read that a control's description answers.
struct Property {
    std::uint8_t request = 0;
    std::int64_t (*of)(const Description& control) = nullptr;
};

constexpr Property properties[] = {
    {UVC_GET_MIN, [](const Description& of) -> std::int64_t { return of.minimum; }},
    {UVC_GET_MAX, [](const Description& of) -> std::int64_t { return of.maximum; }},
    {UVC_GET_RES, [](const Description& of) { return static_cast<std::int64_t>(of.step); }},
    {UVC_GET_DEF, [](const Description& of) -> std::int64_t { return of.default_value; }},
};

/// Answers GET_RES for a control whose values are bits: the bits that the camera knows.
IOReturn supportedBits(Ioctl& node, const ControlRow& row, Bytes answer) {
    std::uint64_t bits = 0;
    for (const ValuePair& pair : row.values) {
        v4l2_querymenu item{};
        item.id = row.ids[0];
        item.index = static_cast<std::uint32_t>(pair.v4l2);
        const IOReturn status = callUninterrupted(node, VIDIOC_QUERYMENU, &item);
        if (status == kIOReturnSuccess)
            bits |= static_cast<std::uint64_t>(pair.uvc);
        else if (status != EINVAL)
            return status;
    }
    putField(bits, answer);
    return bits == 0 ? EINVAL : kIOReturnSuccess;
}

IOReturn getProperty(Ioctl& node, const ControlRow& row, const Property& property, Bytes answer) {
    if (!row.values.empty() && property.request == UVC_GET_RES)
        return supportedBits(node, row, answer);
    if (!row.values.empty() && property.request != UVC_GET_DEF)
        return EBADRQC;  // a set of bits has no least and no greatest value
    IOReturn status = kIOReturnSuccess;
    for (std::size_t i = 0; i < row.fields() && status == kIOReturnSuccess; ++i) {
        Description control;
        status = describe(node, row.ids[i], control);
        if (status == kIOReturnSuccess)
            status = v4l2ToField(row, property.of(control), fieldOf(row, i, answer));
    }
    return status;
}

/// The capabilities byte (UVC 1.5, 4.1.2) of a control with these V4L2 flags.
std::uint8_t capabilities(std::uint32_t flags) {
    struct Capability {
        std::uint32_t flag;
        bool whenSet;
        std::uint8_t bit;
    };
    static constexpr Capability all[] = {
        {V4L2_CTRL_FLAG_WRITE_ONLY, false, UVC_CONTROL_CAP_GET},
        {V4L2_CTRL_FLAG_READ_ONLY, false, UVC_CONTROL_CAP_SET},
        {V4L2_CTRL_FLAG_INACTIVE, true, UVC_CONTROL_CAP_DISABLED},
        {V4L2_CTRL_FLAG_VOLATILE, true, UVC_CONTROL_CAP_AUTOUPDATE},
    };
    std::uint8_t byte = 0;
    for (const Capability& capability : all)
        if (((flags & capability.flag) != 0) == capability.whenSet)
            byte = static_cast<std::uint8_t>(byte | capability.bit);
    return byte;
}

/// Answers a read of a standard control and sets how many bytes of `answer` that took.
IOReturn read(Ioctl& node, const ControlRow& row, std::uint8_t request, RowBytes& answer,
              std::size_t& length) {
    length = row.size();
    if (request == UVC_GET_CUR)
        return getCurrent(node, row, answer);
    const auto* property = std::ranges::find(properties, request, &Property::request);
    if (property != std::end(properties))
        return getProperty(node, row, *property, Bytes(answer).first(length));
    if (request != UVC_GET_LEN && request != UVC_GET_INFO)
        return EBADRQC;
    Description control;
    const IOReturn status = describe(node, row.ids[0], control);
    const bool isLength = request == UVC_GET_LEN;
    putField(isLength ? row.size() : capabilities(control.flags), Bytes(answer).first(2));
    length = isLength ? 2 : 1;
    return status;
}

IOReturn performStandardRequest(Ioctl& node, const ControlRow& row, IOUSBDevRequest& request) {
    if (request.bRequest == UVC_SET_CUR)
        return setCurrent(node, row, request);
    RowBytes answer{};
    std::size_t length = 0;
    const IOReturn status = read(node, row, request.bRequest, answer, length);
    if (status == kIOReturnSuccess)
        reply(request, Bytes(answer).first(length));
    return status;
}

}  // namespace

IOReturn performControlRequest(Ioctl& node, IOUSBDevRequest& request) {
    request.wLenDone = 0;
    const bool isWrite = request.bRequest == UVC_SET_CUR;
    if (request.bmRequestType != (isWrite ? toDevice : fromDevice))
        return EBADRQC;
    if (request.wLength > 0 && request.pData == nullptr)
        return EFAULT;
    const auto unit = static_cast<std::uint8_t>(request.wIndex >> 8);
    if (!isStandardUnit(unit))
        return performExtensionRequest(node, request);
    const ControlRow* row = findControlRow(unit, static_cast<std::uint8_t>(request.wValue >> 8));
    return row == nullptr ? EINVAL : performStandardRequest(node, *row, request);
}

}  // namespace platform
