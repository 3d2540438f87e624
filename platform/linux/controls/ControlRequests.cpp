#include "platform/linux/controls/ControlRequests.h"

#include <linux/uvcvideo.h>
#include <linux/videodev2.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <span>

#include "platform/UVC.h"
#include "platform/linux/controls/ControlRows.h"

namespace platform {
namespace {

using Bytes = std::span<std::uint8_t>;
using Description = v4l2_query_ext_ctrl;

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

/// The driver refuses any size but the exact one. The answer to GET_LEN has two bytes, while the
/// caller's buffer may have any size, so it goes into a buffer of its own first.
IOReturn performExtensionRequest(Ioctl& node, IOUSBDevRequest& request) {
    std::array<std::uint8_t, lengthReplySize> length{};
    const bool isLength = request.bRequest == GET_LEN;
    const Bytes data = isLength ? Bytes(length) : dataOf(request);
    const IOReturn status = queryExtension(node, request, data);
    if (status == kIOReturnSuccess && isLength)
        reply(request, length);
    else if (status == kIOReturnSuccess)
        request.wLenDone = request.wLength;
    return status;
}

/// Reads or writes all controls of a row in one call, so that pan never changes without tilt.
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
    control.id = id;
    const IOReturn status = callUninterrupted(node, VIDIOC_QUERY_EXT_CTRL, &control);
    const bool disabled = (control.flags & V4L2_CTRL_FLAG_DISABLED) != 0;
    return status == kIOReturnSuccess && disabled ? EINVAL : status;
}

/// Reads the minimum or maximum of each field. A control whose values are bits has neither.
IOReturn getLimit(Ioctl& node, const ControlRow& row, __s64 Description::*limit, Bytes answer) {
    IOReturn status = row.values.empty() ? kIOReturnSuccess : EBADRQC;
    for (std::size_t i = 0; i < row.fields() && status == kIOReturnSuccess; ++i) {
        Description control{};
        status = describe(node, row.ids[i], control);
        if (status == kIOReturnSuccess)
            status = v4l2ToField(row, control.*limit, fieldOf(row, i, answer));
    }
    return status;
}

IOReturn read(Ioctl& node, const ControlRow& row, std::uint8_t request, Bytes answer) {
    switch (request) {
        case GET_CUR:
            return getCurrent(node, row, answer);
        case GET_MIN:
            return getLimit(node, row, &Description::minimum, answer);
        case GET_MAX:
            return getLimit(node, row, &Description::maximum, answer);
        default:
            return EBADRQC;
    }
}

IOReturn performStandardRequest(Ioctl& node, const ControlRow& row, IOUSBDevRequest& request) {
    if (request.bRequest == SET_CUR)
        return setCurrent(node, row, request);
    std::array<std::uint8_t, longestControl> room{};
    const Bytes answer = Bytes(room).first(row.size());
    const IOReturn status = read(node, row, request.bRequest, answer);
    if (status == kIOReturnSuccess)
        reply(request, answer);
    return status;
}

}  // namespace

IOReturn performControlRequest(Ioctl& node, IOUSBDevRequest& request) {
    request.wLenDone = 0;
    const bool isWrite = request.bRequest == SET_CUR;
    if (request.bmRequestType != (isWrite ? requestToInterface : requestFromInterface))
        return EBADRQC;
    if (request.wLength > 0 && request.pData == nullptr)
        return EFAULT;
    const auto unit = static_cast<std::uint8_t>(request.wIndex >> 8);
    const auto rows = controlRows(unit);
    if (rows.empty())
        return performExtensionRequest(node, request);
    const auto selector = static_cast<std::uint8_t>(request.wValue >> 8);
    const auto row = std::ranges::find(rows, selector, &ControlRow::selector);
    return row == rows.end() ? EINVAL : performStandardRequest(node, *row, request);
}

}  // namespace platform
