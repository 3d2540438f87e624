// How a slider's number becomes the camera's value.

#include <array>
#include <span>
#include <string>

#include "camera/Transfer.h"
#include "pages/uvc/StandardSliders.h"
#include "platform/ByteOrder.h"

namespace standard {
namespace {

/// Both halves of the pan and tilt control; each product wraps like the camera's 32-bit field.
std::uint64_t panTilt(std::int32_t pan, std::int32_t tilt) {
    const auto arcSeconds = [](std::int32_t degrees) {
        return static_cast<std::uint32_t>(degrees) * std::uint32_t{arcSecondsPerDegree};
    };
    return (std::uint64_t{arcSeconds(tilt)} << 32U) | arcSeconds(pan);
}

}  // namespace

std::uint64_t level(const ViewController& /*controller*/, std::int32_t number) {
    return static_cast<std::uint64_t>(number);
}

std::uint64_t exposureTime(const ViewController& controller, std::int32_t number) {
    const std::int64_t index = std::int64_t{number} - firstExposureIndex;
    const bool isIndex =
        index >= 0 && index < static_cast<std::int64_t>(EXPOSURE_TIME_TABLE.size());
    return level(controller,
                 isIndex ? EXPOSURE_TIME_TABLE[static_cast<std::size_t>(index)] : number);
}

std::uint64_t panWithTilt(const ViewController& controller, std::int32_t number) {
    return panTilt(number, controller.m_sliderTile.intValue());
}

std::uint64_t tiltWithPan(const ViewController& controller, std::int32_t number) {
    return panTilt(controller.m_sliderPano.intValue(), number);
}

void showNumber(const ViewController& controller, const SliderControl& control,
                std::int32_t number) {
    (controller.*control.text).setStringValue(std::to_string(number));
}

void sendNumber(const ViewController& controller, const SliderControl& control,
                std::int32_t number) {
    std::array<std::uint8_t, longestControl> bytes{};
    const std::int32_t size = findControl(control.unit, control.selector)->size;
    const auto value = std::span(bytes).first(static_cast<std::size_t>(size));
    putLittleEndian(control.encode(controller, number), value);
    sendValue(control.unit, control.selector, value);
}

}  // namespace standard
