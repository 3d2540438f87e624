#include "platform/linux/controls/ControlRows.h"

#include <linux/v4l2-controls.h>

#include <algorithm>
#include <cerrno>
#include <limits>

#include "platform/ByteOrder.h"
#include "platform/UVC.h"

namespace platform {
namespace {

/// UVC has a bit for each mode, V4L2 a number.
constexpr ValuePair exposureModes[] = {
    {exposureManual, V4L2_EXPOSURE_MANUAL},
    {exposureAutomatic, V4L2_EXPOSURE_AUTO},
    {exposureShutterPriority, V4L2_EXPOSURE_SHUTTER_PRIORITY},
    {exposureAperturePriority, V4L2_EXPOSURE_APERTURE_PRIORITY},
};

constexpr ControlRow cameraTerminalRows[] = {
    {CT_AE_MODE_CONTROL, 1, false, {V4L2_CID_EXPOSURE_AUTO}, exposureModes},
    {CT_EXPOSURE_TIME_ABSOLUTE_CONTROL, 4, false, {V4L2_CID_EXPOSURE_ABSOLUTE}},
    {CT_FOCUS_ABSOLUTE_CONTROL, 2, false, {V4L2_CID_FOCUS_ABSOLUTE}},
    {CT_FOCUS_AUTO_CONTROL, 1, false, {V4L2_CID_FOCUS_AUTO}},
    {CT_ZOOM_ABSOLUTE_CONTROL, 2, false, {V4L2_CID_ZOOM_ABSOLUTE}},
    {CT_PANTILT_ABSOLUTE_CONTROL, 4, true, {V4L2_CID_PAN_ABSOLUTE, V4L2_CID_TILT_ABSOLUTE}},
};

constexpr ControlRow processingUnitRows[] = {
    {PU_BACKLIGHT_COMPENSATION_CONTROL, 2, false, {V4L2_CID_BACKLIGHT_COMPENSATION}},
    {PU_BRIGHTNESS_CONTROL, 2, true, {V4L2_CID_BRIGHTNESS}},
    {PU_CONTRAST_CONTROL, 2, false, {V4L2_CID_CONTRAST}},
    {PU_GAIN_CONTROL, 2, false, {V4L2_CID_GAIN}},
    {PU_POWER_LINE_FREQUENCY_CONTROL, 1, false, {V4L2_CID_POWER_LINE_FREQUENCY}},
    {PU_HUE_CONTROL, 2, true, {V4L2_CID_HUE}},
    {PU_SATURATION_CONTROL, 2, false, {V4L2_CID_SATURATION}},
    {PU_SHARPNESS_CONTROL, 2, false, {V4L2_CID_SHARPNESS}},
    {PU_GAMMA_CONTROL, 2, false, {V4L2_CID_GAMMA}},
    {PU_WHITE_BALANCE_TEMPERATURE_CONTROL, 2, false, {V4L2_CID_WHITE_BALANCE_TEMPERATURE}},
    {PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL, 1, false, {V4L2_CID_AUTO_WHITE_BALANCE}},
};

std::int64_t takeField(const ControlRow& row, std::span<const std::uint8_t> bytes) {
    const auto field = bytes.first(row.width);
    return row.isSigned ? signedLittleEndian(field)
                        : static_cast<std::int64_t>(littleEndian(field));
}

}  // namespace

std::span<const ControlRow> controlRows(std::uint8_t unit) {
    switch (unit) {
        case cameraTerminalID:
            return cameraTerminalRows;
        case processingUnitID:
            return processingUnitRows;
        default:
            return {};
    }
}

IOReturn fieldToV4l2(const ControlRow& row, std::span<const std::uint8_t> bytes,
                     std::int32_t& value) {
    const std::int64_t uvc = takeField(row, bytes);
    if (row.values.empty()) {
        if (uvc > std::numeric_limits<std::int32_t>::max())
            return ERANGE;
        value = static_cast<std::int32_t>(uvc);
        return kIOReturnSuccess;
    }
    const auto pair = std::ranges::find(row.values, uvc, &ValuePair::uvc);
    if (pair == row.values.end())
        return EINVAL;
    value = pair->v4l2;
    return kIOReturnSuccess;
}

IOReturn v4l2ToField(const ControlRow& row, std::int64_t value, std::span<std::uint8_t> bytes) {
    std::int64_t uvc = value;
    if (!row.values.empty()) {
        const auto pair = std::ranges::find(row.values, value, &ValuePair::v4l2);
        if (pair == row.values.end())
            return EINVAL;
        uvc = pair->uvc;
    } else if (row.width == sizeof(std::int32_t) && !row.isSigned && value < 0) {
        // V4L2 values have 32 bits with a sign: the driver turns 2^31 and more into negative ones.
        uvc = static_cast<std::uint32_t>(value);
    }
    putLittleEndian(static_cast<std::uint64_t>(uvc), bytes.first(row.width));
    return takeField(row, bytes) == uvc ? kIOReturnSuccess : ERANGE;
}

}  // namespace platform
