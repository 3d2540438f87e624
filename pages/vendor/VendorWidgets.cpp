// How the vendor page's widgets show a value.

#include <string>

#include "camera/ControlTable.h"
#include "camera/Transfer.h"
#include "pages/vendor/VendorPage.h"

namespace vendor {

GainRange readGainRange() {
    std::int8_t automaticWhiteBalance = 0;
    Capture_Transfer(PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL, captureRead, &automaticWhiteBalance,
                     sizeof automaticWhiteBalance, UNIT_PU);
    return automaticWhiteBalance == 1 ? GainRange{0, 10, 11} : GainRange{-10, 10, 21};
}

void setGainRange(ViewController& controller, const ValueControl& control, const GainRange& range) {
    const NSSlider& slider = controller.*control.slider;
    slider.setMinValue(range.minimum);
    slider.setMaxValue(range.maximum);
    slider.setNumberOfTickMarks(range.tickMarks);
    controller.ChangeCtrlRange(control.gain.value(), range.minimum);
}

void fillList(const NSPopUpButton& list, std::int32_t highest, std::int32_t lowest) {
    list.removeAllItems();
    for (std::int32_t number = highest; number >= lowest; --number)
        list.addItemWithTitle(std::to_string(number));
}

void chooseNumber(const NSPopUpButton& list, std::int32_t number) {
    list.setTitle(std::to_string(number));
}

void showSwitch(const ViewController& controller, const SwitchControl& control, bool on) {
    const NSButton& button = controller.*control.button;
    button.setState(on ? 1 : 0);
    button.setImage(NSImage::imageNamed(on ? "button_on.png" : "button_off.png"));
}

void enableGoverned(const ViewController& controller, const SwitchControl& control, bool on) {
    if (control.governed == nullptr)
        return;
    (controller.*control.governed->list).setEnabled(on);
    (controller.*control.governed->slider).setEnabled(on);
}

}  // namespace vendor

void ViewController::ChangeCtrlRange(std::int32_t list, std::int32_t min) {
    vendor::fillList(list == 0 ? m_SpinRgain : m_SpinBgain, 10, min == 0 ? 0 : -10);
}

void ViewController::DisCheckAllStyle() {
    m_btnStyleNormal.setAllowsMixedState(true);
    for (const vendor::PictureStyle* style : vendor::styles)
        (this->*style->button).setState(0);
}
