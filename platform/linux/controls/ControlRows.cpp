#include "platform/linux/controls/ControlRows.h"

#include <linux/v4l2-controls.h>

#include <algorithm>
#include <cerrno>
#include <limits>

namespace platform {
namespace {

constexpr std::uint8_t cameraTerminal = 1;
constexpr std::uint8_t processingUnit = 3;

/// UVC has a bit for each mode, V4L2 a number.
constexpr ValuePair exposureModes[] = {
    {1, V4L2_EXPOSURE_MANUAL},
    {2, V4L2_EXPOSURE_AUTO},
    {4, V4L2_EXPOSURE_SHUTTER_PRIORITY},
    {8, V4L2_EXPOSURE_APERTURE_PRIORITY},
};

constexpr ControlRow rows[] = {
    {cameraTerminal, 2, 1, false, {V4L2_CID_EXPOSURE_AUTO}, exposureModes},
    {cameraTerminal, 4, 4, false, {V4L2_CID_EXPOSURE_ABSOLUTE}, {}},
    {cameraTerminal, 6, 2, false, {V4L2_CID_FOCUS_ABSOLUTE}, {}},
    {cameraTerminal, 8, 1, false, {V4L2_CID_FOCUS_AUTO}, {}},
    {cameraTerminal, 11, 2, false, {V4L2_CID_ZOOM_ABSOLUTE}, {}},
    {cameraTerminal, 13, 4, true, {V4L2_CID_PAN_ABSOLUTE, V4L2_CID_TILT_ABSOLUTE}, {}},
    {processingUnit, 1, 2, false, {V4L2_CID_BACKLIGHT_COMPENSATION}, {}},
    {processingUnit, 2, 2, true, {V4L2_CID_BRIGHTNESS}, {}},
    {processingUnit, 3, 2, false, {V4L2_CID_CONTRAST}, {}},
    {processingUnit, 4, 2, false, {V4L2_CID_GAIN}, {}},
    {processingUnit, 5, 1, false, {V4L2_CID_POWER_LINE_FREQUENCY}, {}},
    {processingUnit, 6, 2, true, {V4L2_CID_HUE}, {}},
    {processingUnit, 7, 2, false, {V4L2_CID_SATURATION}, {}},
    {processingUnit, 8, 2, false, {V4L2_CID_SHARPNESS}, {}},
    {processingUnit, 9, 2, false, {V4L2_CID_GAMMA}, {}},
    {processingUnit, 10, 2, false, {V4L2_CID_WHITE_BALANCE_TEMPERATURE}, {}},
    {processingUnit, 11, 1, false, {V4L2_CID_AUTO_WHITE_BALANCE}, {}},
};

/// The values that a field holds: from `low`, as many as its bits count.
struct FieldRange {
    std::int64_t low = 0;
    std::int64_t count = 0;
};

FieldRange rangeOf(const ControlRow& row) {
    const std::int64_t count = std::int64_t{1} << (8 * row.width);
    return {row.isSigned ? -count / 2 : 0, count};
}

std::int64_t takeField(const ControlRow& row, std::span<const std::uint8_t> bytes) {
    std::int64_t value = 0;
    for (std::size_t i = row.width; i-- > 0;)
        value = value * 256 + bytes[i];
    const auto [low, count] = rangeOf(row);
    return value >= low + count ? value - count : value;
}

}  // namespace

bool isStandardUnit(std::uint8_t unit) {
    return unit == cameraTerminal || unit == processingUnit;
}

const ControlRow* findControlRow(std::uint8_t unit, std::uint8_t selector) {
    const auto* row = std::ranges::find_if(rows, [&](const ControlRow& candidate) {
        return candidate.unit == unit && candidate.selector == selector;
    });
    return row == std::end(rows) ? nullptr : row;
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
    const auto [low, count] = rangeOf(row);
    if (!row.values.empty()) {
        const auto pair = std::ranges::find(row.values, value, &ValuePair::v4l2);
        if (pair == row.values.end())
            return EINVAL;
        uvc = pair->uvc;
    } else if (row.width == 4 && !row.isSigned && value < 0) {
        // The driver hands the upper half of an unsigned field on in a signed word.
        uvc += count;
    }
    if (uvc < low || uvc >= low + count)
        return ERANGE;
    putField(static_cast<std::uint64_t>(uvc), bytes.first(row.width));
    return kIOReturnSuccess;
}

void putField(std::uint64_t value, std::span<std::uint8_t> bytes) {
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(value & 0xFF);
        value >>= 8;
    }
}

}  // namespace platform
