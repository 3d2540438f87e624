// Single controls by name, and what their replies mean.

#include <array>
#include <cmath>
#include <span>
#include <utility>

#include "camera/UVCCameraControl.h"
#include "platform/ByteOrder.h"

namespace {

/// Puts a buffer of one's own in the place of the caller's for one read, and gives the transfer
/// slots back afterwards.
class OwnBuffer {
  public:
    OwnBuffer()
        : callersBuffer_(std::exchange(g_dataBuffer, bytes_.data())),
          callersLength_(std::exchange(g_length, static_cast<std::int32_t>(bytes_.size()))) {}
    OwnBuffer(const OwnBuffer&) = delete;
    OwnBuffer& operator=(const OwnBuffer&) = delete;
    ~OwnBuffer() {
        g_dataBuffer = callersBuffer_;
        g_length = callersLength_;
    }

    std::span<const std::uint8_t> bytes() const { return bytes_; }

  private:
    std::array<std::uint8_t, longestControl> bytes_{};
    void* callersBuffer_;
    std::int32_t callersLength_;
};

/// Drops the fraction; what no 64-bit integer can hold counts as 0.
std::int64_t integerPart(double value) {
    constexpr double limit = 0x1p63;
    return std::isfinite(value) && std::abs(value) < limit ? static_cast<std::int64_t>(value) : 0;
}

}  // namespace

std::int64_t UVCCameraControl::decodedReply(std::int32_t code, const UVCControlInfo& control) {
    const OwnBuffer buffer;
    if (getDataFor(code, control.size, control.selector, control.unit) != 0)
        return 0;
    // Vendor values are one signed byte, whatever length the camera gives them.
    const auto width = static_cast<std::size_t>(control.unit == extensionUnitID ? 1 : control.size);
    return signedLittleEndian(buffer.bytes().first(width));
}

float UVCCameraControl::levelOf(std::int32_t selector) {
    return static_cast<float>(decodedReply(GET_CUR, *findControl(UNIT_PU, selector)));
}

std::int8_t UVCCameraControl::setLevel(std::int32_t selector, float value) {
    return setValue(integerPart(double{value}), findControl(UNIT_PU, selector));
}

UVCControlRange UVCCameraControl::getRangeForControl(const UVCControlInfo* control) {
    const std::int64_t minimum = decodedReply(GET_MIN, *control);
    const std::int64_t maximum = decodedReply(GET_MAX, *control);
    return {static_cast<std::int32_t>(minimum), static_cast<std::int32_t>(maximum)};
}

std::int8_t UVCCameraControl::setAutoExposure(bool automatic) {
    const UVCControlInfo* mode = findControl(UNIT_CT, CT_AE_MODE_CONTROL);
    return setData(automatic ? exposureAperturePriority : exposureManual, mode->size,
                   mode->selector, mode->unit);
}

bool UVCCameraControl::getAutoExposure() {
    return decodedReply(GET_CUR, *findControl(UNIT_CT, CT_AE_MODE_CONTROL)) ==
           exposureAperturePriority;
}

std::int8_t UVCCameraControl::setExposure(float value) {
    return setValue(integerPart(1.0 - double{value}),
                    findControl(UNIT_CT, CT_EXPOSURE_TIME_ABSOLUTE_CONTROL));
}

float UVCCameraControl::getExposure() {
    const auto* control = findControl(UNIT_CT, CT_EXPOSURE_TIME_ABSOLUTE_CONTROL);
    return static_cast<float>(1 - decodedReply(GET_CUR, *control));
}

std::int8_t UVCCameraControl::setGain(float value) {
    return setLevel(PU_GAIN_CONTROL, value);
}

float UVCCameraControl::getGain() {
    return levelOf(PU_GAIN_CONTROL);
}

std::int8_t UVCCameraControl::setBrightness(float value) {
    return setLevel(PU_BRIGHTNESS_CONTROL, value);
}

float UVCCameraControl::getBrightness() {
    return levelOf(PU_BRIGHTNESS_CONTROL);
}

std::int8_t UVCCameraControl::setContrast(float value) {
    return setLevel(PU_CONTRAST_CONTROL, value);
}

float UVCCameraControl::getContrast() {
    return levelOf(PU_CONTRAST_CONTROL);
}

std::int8_t UVCCameraControl::setSaturation(float value) {
    return setLevel(PU_SATURATION_CONTROL, value);
}

float UVCCameraControl::getSaturation() {
    return levelOf(PU_SATURATION_CONTROL);
}

std::int8_t UVCCameraControl::setSharpness(float value) {
    return setLevel(PU_SHARPNESS_CONTROL, value);
}

float UVCCameraControl::getSharpness() {
    return levelOf(PU_SHARPNESS_CONTROL);
}

std::int8_t UVCCameraControl::setWhiteBalance(float value) {
    return setLevel(PU_WHITE_BALANCE_TEMPERATURE_CONTROL, value);
}

float UVCCameraControl::getWhiteBalance() {
    return levelOf(PU_WHITE_BALANCE_TEMPERATURE_CONTROL);
}

std::int8_t UVCCameraControl::setAutoWhiteBalance(bool automatic) {
    const UVCControlInfo* mode = findControl(UNIT_PU, PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL);
    return setData(automatic ? 1 : 0, mode->size, mode->selector, mode->unit);
}

bool UVCCameraControl::getAutoWhiteBalance() {
    return levelOf(PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL) != 0;
}

std::int8_t UVCCameraControl::SetExpCompSwitch(std::int32_t value) {
    return setValue(value, findControl(UNIT_XU, XU_COMP_SWITCH));
}

std::int32_t UVCCameraControl::GetExpCompSwitch() {
    return static_cast<std::int32_t>(decodedReply(GET_CUR, *findControl(UNIT_XU, XU_COMP_SWITCH)));
}

float UVCCameraControl::mapValue(float v, float fromMin, float max, float toMin, float toMax) {
    return (v - fromMin) / (max - fromMin) * (toMax - toMin) + toMin;
}
