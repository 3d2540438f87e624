// Fills the standard page from the camera.

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "camera/Transfer.h"
#include "pages/uvc/StandardSliders.h"
#include "platform/ByteOrder.h"
#include "platform/NSLog.h"

namespace {

using standard::SliderControl;

/// The buffer that consecutive reads share. It is cleared once: a control that does not answer
/// shows what the one before it left.
class SharedBuffer {
  public:
    std::int64_t read(std::int32_t selector, UnitKind unit) {
        return Capture_Transfer(static_cast<std::uint32_t>(selector), captureRead, bytes_.data(),
                                sizeof bytes_, static_cast<std::uint32_t>(unit));
    }

    std::span<const std::uint8_t> first(std::size_t count) const {
        return std::span(bytes_).first(count);
    }

    /// The signed 32-bit number that starts at byte `offset`.
    std::int32_t number32At(std::size_t offset) const {
        return static_cast<std::int32_t>(signedLittleEndian(std::span(bytes_).subspan(offset, 4)));
    }

  private:
    std::array<std::uint8_t, longestControl> bytes_{};
};

/// Bytes that a processing-unit value takes in `uvcCfg`.
constexpr std::size_t slotSize = 2;

std::int32_t unsigned16(std::span<const std::uint8_t> bytes) {
    return static_cast<std::int32_t>(littleEndian(bytes.first(slotSize)));
}

void showOnSlider(ViewController& controller, const SliderControl& control, std::int32_t number) {
    (controller.*control.slider).setIntValue(number);
    standard::showNumber(controller, control, number);
}

template <const SliderControl& control>
void showLevel(ViewController& controller, std::span<const std::uint8_t> bytes) {
    showOnSlider(controller, control, unsigned16(bytes));
}

void showAutomaticWhiteBalance(ViewController& controller, std::span<const std::uint8_t> bytes) {
    controller.m_btnAutoWB.setIntValue(bytes[0]);
    controller.m_btnAutoWB.setState(bytes[0]);
    controller.m_sliderWB.setEnabled(bytes[0] != 1);
}

void showPowerLineFrequency(ViewController& controller, std::span<const std::uint8_t> bytes) {
    const bool is50Hz = bytes[0] == powerLine50Hz;
    (is50Hz ? controller.m_btn50HZ : controller.m_btn60HZ).setState(1);
    (is50Hz ? controller.m_btn60HZ : controller.m_btn50HZ).setState(0);
}

/// A control of the processing unit, and what shows the bytes that `uvcCfg` holds of it.
struct Slot {
    std::int32_t selector;
    void (*show)(ViewController& controller, std::span<const std::uint8_t> bytes);
};

/// In the order in which the camera is asked and `uvcCfg` holds the answers.
constexpr std::array<Slot, 11> slots{{
    {PU_BRIGHTNESS_CONTROL, showLevel<standard::brightness>},
    {PU_CONTRAST_CONTROL, showLevel<standard::contrast>},
    {PU_HUE_CONTROL, showLevel<standard::hue>},
    {PU_SATURATION_CONTROL, showLevel<standard::saturation>},
    {PU_SHARPNESS_CONTROL, showLevel<standard::sharpness>},
    {PU_GAMMA_CONTROL, showLevel<standard::gamma>},
    {PU_WHITE_BALANCE_TEMPERATURE_CONTROL, showLevel<standard::whiteBalance>},
    {PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL, showAutomaticWhiteBalance},
    {PU_BACKLIGHT_COMPENSATION_CONTROL, showLevel<standard::backlight>},
    {PU_GAIN_CONTROL, showLevel<standard::gain>},
    {PU_POWER_LINE_FREQUENCY_CONTROL, showPowerLineFrequency},
}};

/// Shows a camera terminal's 16-bit value: the text first, then the slider.
void show16(ViewController& controller, const SliderControl& control, const SharedBuffer& buffer) {
    const std::int32_t number = unsigned16(buffer.first(slotSize));
    standard::showNumber(controller, control, number);
    (controller.*control.slider).setIntValue(number);
}

/// Returns whether the camera has a zoom.
bool loadZoom(ViewController& controller, SharedBuffer& buffer) {
    const std::int64_t status = buffer.read(CT_ZOOM_ABSOLUTE_CONTROL, UNIT_CT);
    NSLog("zoomEnable:%d", static_cast<std::int32_t>(status));
    controller.m_sliderZoom.setEnabled(status == 0);
    if (status == 0)
        show16(controller, standard::zoom, buffer);
    return status == 0;
}

void loadFocus(ViewController& controller, SharedBuffer& buffer) {
    if (buffer.read(CT_FOCUS_ABSOLUTE_CONTROL, UNIT_CT) != 0) {
        controller.m_btnAutoFocus.setState(0);
        controller.m_btnAutoFocus.setEnabled(false);
        controller.m_sliderFocus.setEnabled(false);
        return;
    }
    controller.m_sliderFocus.setEnabled(true);
    controller.m_btnAutoFocus.setEnabled(true);
    show16(controller, standard::focus, buffer);
    buffer.read(CT_FOCUS_AUTO_CONTROL, UNIT_CT);
    const std::uint8_t automatic = buffer.first(1)[0];
    controller.m_btnAutoFocus.setState(automatic);
    controller.m_sliderFocus.setEnabled(automatic == 0);
}

/// Returns the slider's number for an exposure time, or the time itself when it has none.
std::int32_t exposureIndex(std::int32_t time) {
    const auto* entry = std::ranges::find(standard::EXPOSURE_TIME_TABLE, time);
    return entry == standard::EXPOSURE_TIME_TABLE.end()
               ? time
               : standard::firstExposureIndex +
                     static_cast<std::int32_t>(entry - standard::EXPOSURE_TIME_TABLE.begin());
}

void loadExposure(ViewController& controller, SharedBuffer& buffer) {
    buffer.read(CT_AE_MODE_CONTROL, UNIT_CT);
    const bool automatic = buffer.first(1)[0] == exposureAperturePriority;
    controller.m_btnAutoExposure.setState(automatic ? 1 : 0);
    controller.m_sliderAutoExposure.setEnabled(!automatic);
    buffer.read(CT_EXPOSURE_TIME_ABSOLUTE_CONTROL, UNIT_CT);
    showOnSlider(controller, standard::exposure, exposureIndex(buffer.number32At(0)));
}

void loadPanTilt(ViewController& controller, SharedBuffer& buffer, bool available) {
    controller.m_sliderPano.setEnabled(available);
    controller.m_sliderTile.setEnabled(available);
    if (!available)
        return;
    buffer.read(CT_PANTILT_ABSOLUTE_CONTROL, UNIT_CT);
    showOnSlider(controller, standard::pan, buffer.number32At(0) / standard::arcSecondsPerDegree);
    showOnSlider(controller, standard::tilt, buffer.number32At(4) / standard::arcSecondsPerDegree);
}

}  // namespace

void ViewController::ReadConfig_UVC() {
    SharedBuffer buffer;
    auto place = uvcCfg.begin();
    for (const Slot& slot : slots) {
        buffer.read(slot.selector, UNIT_PU);
        place = std::ranges::copy(buffer.first(slotSize), place).out;
    }
}

void ViewController::InitUVCPage() {
    std::span<const std::uint8_t> rest = uvcCfg;
    for (const Slot& slot : slots) {
        slot.show(*this, rest.first(slotSize));
        rest = rest.subspan(slotSize);
    }
    SharedBuffer buffer;
    const bool hasZoom = loadZoom(*this, buffer);
    loadFocus(*this, buffer);
    loadExposure(*this, buffer);
    // Whether there are pan and tilt is not asked: they follow the zoom's answer.
    loadPanTilt(*this, buffer, hasZoom);
}
