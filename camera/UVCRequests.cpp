// Reads and writes of one control as UVC class requests on the default control pipe.

#include <algorithm>
#include <array>
#include <span>

#include "camera/StatusText.h"
#include "camera/UVCCameraControl.h"
#include "platform/ByteOrder.h"
#include "platform/NSLog.h"

void* g_dataBuffer = nullptr;
std::int32_t g_length = 0;

namespace {

/// Addresses a control: the selector in the high byte of wValue, the unit in that of wIndex. The
/// interface number in wIndex's low byte is always 0.
IOUSBDevRequest requestTo(std::int32_t selector, std::int32_t unit, std::uint8_t type,
                          std::int32_t code, std::int32_t length, void* data) {
    IOUSBDevRequest request;
    request.bmRequestType = type;
    request.bRequest = static_cast<std::uint8_t>(code);
    request.wValue = static_cast<std::uint16_t>(selector * 256);
    request.wIndex = static_cast<std::uint16_t>(unit * 256);
    request.wLength = static_cast<std::uint16_t>(length);
    request.pData = data;
    return request;
}

/// Returns whether a value of `length` bytes can be written; logs when it can't.
bool isWritable(std::int32_t length) {
    const bool fits = length >= 0 && length <= longestControl;
    if (!fits)
        NSLog("CameraControl Error: A control of %d bytes can't be written", length);
    return fits;
}

/// Returns the first `size` bytes of the receive buffer.
std::span<std::uint8_t> received(std::int32_t size) {
    return {static_cast<std::uint8_t*>(g_dataBuffer), static_cast<std::size_t>(size)};
}

}  // namespace

bool UVCCameraControl::hasInterface() const {
    if (!interface)
        NSLog("CameraControl Error: No interface to send request");
    return interface != nullptr;
}

std::int32_t UVCCameraControl::sendControlRequest(IOUSBDevRequest controlRequest) {
    if (!hasInterface())
        return 1;
    const IOReturn opened = interface->USBInterfaceOpen();
    if (opened != kIOReturnSuccess) {
        NSLog("CameraControl Error: Unable to open interface (%08x)\n", statusBits(opened));
        return 1;
    }
    const IOReturn sent = interface->ControlRequest(0, controlRequest);
    interface->USBInterfaceClose();
    if (sent != kIOReturnSuccess) {
        NSLog("CameraControl Error: Control request failed: %08x", statusBits(sent));
        return 1;
    }
    return 0;
}

std::int8_t UVCCameraControl::setData(std::int64_t value, std::int32_t withLength,
                                      std::int32_t forSelector, std::int32_t at) {
    std::int32_t length = withLength;
    if (!hasInterface() || !isWritable(length))
        return 1;
    std::array<std::uint8_t, longestControl> data{};
    if (at == extensionUnitID) {
        if (sendControlRequest(requestTo(forSelector, at, requestFromInterface, GET_LEN, length,
                                         data.data())) != 0)
            return 1;
        length = static_cast<std::int32_t>(littleEndian(std::span(data).first(lengthReplySize)));
        if (!isWritable(length))
            return 1;
    }
    putLittleEndian(static_cast<std::uint64_t>(value), data);
    if (length == longestControl)
        NSLog("set:length:%d , %ld", length, value);
    return static_cast<std::int8_t>(sendControlRequest(
        requestTo(forSelector, at, requestToInterface, SET_CUR, length, data.data())));
}

/// Asks the camera for a vendor control's length, leaves it in `g_length` and clears the receive
/// buffer. Fails when the buffer has no room for the answer, or for the control.
std::int64_t UVCCameraControl::readLengthOfControl(std::int32_t selector) {
    const std::int32_t room = g_length;
    // The room goes on the wire in 16 bits.
    if (room < 0 || (room & 0xFFFF) < lengthReplySize) {
        NSLog("CameraControl Error: No room for a control's length in %d bytes", room);
        return 1;
    }
    if (sendControlRequest(requestTo(selector, extensionUnitID, requestFromInterface, GET_LEN, room,
                                     g_dataBuffer)) != 0)
        return 1;
    g_length = static_cast<std::int32_t>(littleEndian(received(lengthReplySize)));
    std::ranges::fill(received(room), std::uint8_t{0});
    if (g_length > room) {
        NSLog("CameraControl Error: A control of %d bytes does not fit a buffer of %d", g_length,
              room);
        return 1;
    }
    return 0;
}

std::int64_t UVCCameraControl::getDataFor(std::int32_t code, std::int32_t withLength,
                                          std::int32_t fromSelector, std::int32_t at) {
    if (!hasInterface())
        return 1;
    if (g_dataBuffer == nullptr) {
        NSLog("CameraControl Error: There is no buffer to read into");
        return 1;
    }
    if (at != extensionUnitID && !isControlSize(withLength)) {
        NSLog("CameraControl Error: No control has %d bytes", withLength);
        return 1;
    }
    const std::int32_t room = g_length;
    if (at != extensionUnitID)
        g_length = withLength;
    else if (readLengthOfControl(fromSelector) != 0)
        return 1;
    const auto firstWord = received(std::min(std::max(room, withLength), 2));
    NSLog("bmRequestType2:%d get_data_for:%d", std::int32_t{requestFromInterface},
          static_cast<std::int32_t>(littleEndian(firstWord)));
    return sendControlRequest(
        requestTo(fromSelector, at, requestFromInterface, code, g_length, g_dataBuffer));
}

std::int64_t UVCCameraControl::getValueForControl(const UVCControlInfo* control) {
    return getDataFor(GET_CUR, control->size, control->selector, control->unit);
}

std::int8_t UVCCameraControl::setValue(std::int64_t value, const UVCControlInfo* forControl) {
    NSLog("intval:%ld", value);
    return setData(value, forControl->size, forControl->selector, forControl->unit);
}
