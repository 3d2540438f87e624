// Fills the standard page from the camera.

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "app/ViewController.h"
#include "camera/Transfer.h"
#include "pages/uvc/StandardPage.h"
#include "platform/ByteOrder.h"
#include "platform/NSLog.h"

namespace {

using standard::SliderControl;

/// Bytes that a processing-unit value takes in `uvcCfg`.
constexpr std::size_t slotSize = 2;

/// The processing unit's controls in the order in which `uvcCfg` holds them. A control without a
/// slider has none here.
struct Slot {
    std::int32_t selector;
    const SliderControl* control;
};

constexpr std::size_t automaticWhiteBalanceSlot = 7;
constexpr std::size_t powerLineSlot = 10;
constexpr std::array<Slot, 11> slots{{
    {PU_BRIGHTNESS_CONTROL, &standard::brightness},
    {PU_CONTRAST_CONTROL, &standard::contrast},
    {PU_HUE_CONTROL, &standard::hue},
    {PU_SATURATION_CONTROL, &standard::saturation},
    {PU_SHARPNESS_CONTROL, &standard::sharpness},
    {PU_GAMMA_CONTROL, &standard::gamma},
    {PU_WHITE_BALANCE_TEMPERATURE_CONTROL, &standard::whiteBalance},
    {PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL, nullptr},
    {PU_BACKLIGHT_COMPENSATION_CONTROL, &standard::backlight},
    {PU_GAIN_CONTROL, &standard::gain},
    {PU_POWER_LINE_FREQUENCY_CONTROL, nullptr},
}};

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
    std::array<std::uint8_t, 8> bytes_{};
};

std::int32_t unsigned16(std::span<const std::uint8_t> bytes) {
    return static_cast<std::int32_t>(littleEndian(bytes.first(slotSize)));
}

void showOnSlider(ViewController& controller, const SliderControl& control, std::int32_t number) {
    (controller.*control.slider).setIntValue(number);
    standard::showNumber(controller, control, number);
}

void loadAutomaticWhiteBalance(ViewController& controller, std::uint8_t automatic) {
    controller.m_btnAutoWB.setIntValue(automatic);
    controller.m_btnAutoWB.setState(automatic);
    controller.m_sliderWB.setEnabled(automatic != 1);
}

void loadPowerLineFrequency(ViewController& controller, std::uint8_t frequency) {
    const bool is50Hz = frequency == powerLine50Hz;
    (is50Hz ? controller.m_btn50HZ : controller.m_btn60HZ).setState(1);
    (is50Hz ? controller.m_btn60HZ : controller.m_btn50HZ).setState(0);
}

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
    for (std::size_t i = 0; i < slots.size(); ++i) {
        const auto bytes = std::span(uvcCfg).subspan(i * slotSize, slotSize);
        if (slots[i].control != nullptr)
            showOnSlider(*this, *slots[i].control, unsigned16(bytes));
        else if (i == automaticWhiteBalanceSlot)
            loadAutomaticWhiteBalance(*this, bytes[0]);
        else if (i == powerLineSlot)
            loadPowerLineFrequency(*this, bytes[0]);
    }
    SharedBuffer buffer;
    const bool hasZoom = loadZoom(*this, buffer);
    loadFocus(*this, buffer);
    loadExposure(*this, buffer);
    // The camera family moves its picture within the zoomed one: without a zoom there is no pan.
    loadPanTilt(*this, buffer, hasZoom);
}
