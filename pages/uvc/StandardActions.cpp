// What the user changes on the standard page, sent to the camera at once.

#include <array>

#include "camera/Transfer.h"
#include "pages/uvc/StandardSliders.h"

namespace {

using standard::SliderControl;

/// Asks the camera for the value that it took; the widgets keep what the user chose.
void readBack(const SliderControl& control) {
    std::array<std::uint8_t, 2> value{};
    Capture_Transfer(static_cast<std::uint32_t>(control.selector), captureRead, value.data(),
                     sizeof value, static_cast<std::uint32_t>(control.unit));
}

void sliderMoved(const ViewController& controller, const SliderControl& control,
                 const NSSlider& sender) {
    const int number = sender.intValue();
    standard::showNumber(controller, control, number);
    standard::sendNumber(controller, control, number);
    if (control.readBack)
        readBack(control);
}

/// Gives the sliders of `unit` that no automatic mode holds their defaults, as the user would.
void resetSliders(const ViewController& controller, UnitKind unit) {
    for (const SliderControl* control : standard::sliders) {
        const bool held =
            control->automaticMode != nullptr && (controller.*control->automaticMode).state() != 0;
        if (control->unit != unit || held)
            continue;
        const NSSlider& slider = controller.*control->slider;
        slider.setIntValue(control->defaultNumber);
        sliderMoved(controller, *control, slider);
    }
}

}  // namespace

void ViewController::OnSliderBright(const NSSlider& sender) {
    sliderMoved(*this, standard::brightness, sender);
}

void ViewController::OnSliderContrast(const NSSlider& sender) {
    sliderMoved(*this, standard::contrast, sender);
}

void ViewController::OnSliderHue(const NSSlider& sender) {
    sliderMoved(*this, standard::hue, sender);
}

void ViewController::OnSliderSaturation(const NSSlider& sender) {
    sliderMoved(*this, standard::saturation, sender);
}

void ViewController::OnSliderSharpness(const NSSlider& sender) {
    sliderMoved(*this, standard::sharpness, sender);
}

void ViewController::OnSliderGama(const NSSlider& sender) {
    sliderMoved(*this, standard::gamma, sender);
}

void ViewController::OnSliderWB(const NSSlider& sender) {
    sliderMoved(*this, standard::whiteBalance, sender);
}

void ViewController::OnSliderBackLight(const NSSlider& sender) {
    sliderMoved(*this, standard::backlight, sender);
}

void ViewController::OnSliderGain(const NSSlider& sender) {
    sliderMoved(*this, standard::gain, sender);
}

void ViewController::OnSliderZoom(const NSSlider& sender) {
    sliderMoved(*this, standard::zoom, sender);
}

void ViewController::OnSliderFocus(const NSSlider& sender) {
    sliderMoved(*this, standard::focus, sender);
}

void ViewController::OnSliderAutoExposure(const NSSlider& sender) {
    sliderMoved(*this, standard::exposure, sender);
}

void ViewController::OnSliderPano(const NSSlider& sender) {
    sliderMoved(*this, standard::pan, sender);
}

void ViewController::OnSliderTile(const NSSlider& sender) {
    sliderMoved(*this, standard::tilt, sender);
}

void ViewController::OnBtnAutoWB(const NSButton& sender) {
    const int state = sender.state();
    sendByte(UNIT_PU, PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL, state);
    m_sliderWB.setEnabled(state != 1);
    if (state != 1)
        standard::sendNumber(*this, standard::whiteBalance, m_sliderWB.intValue());
}

void ViewController::OnBtnAutoFocus(const NSButton& sender) {
    const int state = sender.state();
    sendByte(UNIT_CT, CT_FOCUS_AUTO_CONTROL, state);
    m_sliderFocus.setEnabled(state != 1);
    OnSliderFocus(m_sliderFocus);
}

void ViewController::OnBtnAutoExposure(const NSButton& sender) {
    const int state = sender.state();
    sendByte(UNIT_CT, CT_AE_MODE_CONTROL, state == 1 ? exposureAperturePriority : exposureManual);
    m_sliderAutoExposure.setEnabled(state != 1);
    OnSliderAutoExposure(m_sliderAutoExposure);
}

void ViewController::OnBtnUvcDefault(const NSButton& /*sender*/) {
    resetSliders(*this, UNIT_PU);
    m_btn50HZ.setState(0);
    m_btn60HZ.setState(1);
    OnAntiFlicker60HZ(m_btn60HZ);
    resetSliders(*this, UNIT_CT);
}

void ViewController::OnAntiFlicker50HZ(const NSButton& /*sender*/) {
    sendByte(UNIT_PU, PU_POWER_LINE_FREQUENCY_CONTROL, powerLine50Hz);
    m_btn60HZ.setState(0);
}

void ViewController::OnAntiFlicker60HZ(const NSButton& /*sender*/) {
    sendByte(UNIT_PU, PU_POWER_LINE_FREQUENCY_CONTROL, powerLine60Hz);
    m_btn50HZ.setState(0);
}
