// Reads and writes of the controls that the pages address by unit kind and selector.

#include <algorithm>
#include <array>
#include <span>

#include "camera/Transfer.h"
#include "camera/UVCCameraControl.h"
#include "platform/ByteOrder.h"
#include "platform/NSLog.h"

std::int64_t UVCCameraControl::Capture_GetValue(std::int32_t unitKind, std::int32_t MessageID) {
    const UVCControlInfo* control = findControl(unitKind, MessageID);
    return control == nullptr ? 0 : getValueForControl(control);
}

std::int8_t UVCCameraControl::Capture_SetValue(std::int32_t unitKind, std::int32_t MessageID,
                                               const void* val) {
    const UVCControlInfo* control = findControl(unitKind, MessageID);
    if (control == nullptr)
        return 0;
    // A vendor value is one byte, whatever the length that the camera takes it in.
    const bool oneByte = control->unit == extensionUnitID;
    const std::int32_t size = oneByte ? 1 : control->size;
    const std::int32_t count = oneByte ? 1 : g_length;
    if (count < 0 || count > size) {
        NSLog("CameraControl Error: %d bytes do not fit a control of %d", count, size);
        return 1;
    }
    std::array<std::uint8_t, longestControl> field{};
    std::copy_n(static_cast<const std::uint8_t*>(val), count, field.begin());
    return setValue(signedLittleEndian(std::span(field).first(static_cast<std::size_t>(size))),
                    control);
}

std::int64_t Capture_Transfer(std::uint32_t selector, std::int32_t direction, void* buffer,
                              std::uint32_t length, std::uint32_t unitKind) {
    if (!g_uvcCamera)
        return 1;
    const auto kind = static_cast<std::int32_t>(unitKind);
    const auto message = static_cast<std::int32_t>(selector);
    if (direction == captureWrite) {
        g_length = static_cast<std::int32_t>(length);
        return g_uvcCamera->Capture_SetValue(kind, message, buffer);
    }
    if (direction != captureRead)
        return 0;
    // A standard control is answered in its own size, for which the caller may have too little
    // room.
    std::array<std::uint8_t, longestControl> answer{};
    auto* const room = static_cast<std::uint8_t*>(buffer);
    const bool isShort = room != nullptr && kind != UNIT_XU && length < answer.size();
    if (isShort)
        std::copy_n(room, length, answer.begin());
    g_dataBuffer = isShort ? answer.data() : room;
    g_length = static_cast<std::int32_t>(length);
    NSLog("g_length:%d", g_length);
    const std::int64_t status = g_uvcCamera->Capture_GetValue(kind, message);
    NSLog("g_length2:%d", g_length);
    if (isShort)
        std::copy_n(answer.begin(), length, room);
    g_dataBuffer = nullptr;  // the caller's buffer need not outlive the call
    return status;
}

void sendValue(std::int32_t unitKind, std::int32_t selector, std::span<const std::uint8_t> value) {
    if (!g_uvcCamera)
        return;
    g_length = static_cast<std::int32_t>(value.size());
    g_uvcCamera->Capture_SetValue(unitKind, selector, value.data());
}

void sendByte(std::int32_t unitKind, std::int32_t selector, std::int32_t value) {
    const std::array byte{static_cast<std::uint8_t>(value)};
    sendValue(unitKind, selector, byte);
}
