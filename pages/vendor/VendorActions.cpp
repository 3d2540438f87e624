// What the user changes on the vendor page, sent to the camera at once.

#include <cstdlib>
#include <string>

#include "camera/ControlTable.h"
#include "camera/Transfer.h"
#include "pages/vendor/ShowAlert.h"
#include "pages/vendor/VendorPage.h"
#include "platform/NSLog.h"

namespace {

using vendor::PictureStyle;
using vendor::SwitchControl;
using vendor::Trace;
using vendor::ValueControl;

constexpr const char* alertTitle = "Notice";

void sliderMoved(ViewController& controller, const ValueControl& control, const NSSlider& sender) {
    if (control.trace == Trace::sliderAndList)
        NSLog("slider:%d", sender.intValue());
    // Automatic white balance may have been switched since the range was chosen.
    if (control.gain)
        vendor::setGainRange(controller, control, vendor::readGainRange());
    const int number = sender.intValue();
    vendor::chooseNumber(controller.*control.list, number);
    sendByte(UNIT_XU, control.selector, number);
}

void numberChosen(ViewController& controller, const ValueControl& control,
                  const NSPopUpButton& sender) {
    const std::string title = sender.title();
    if (control.trace != Trace::none)
        NSLog("spin:%@", title);
    const int number = std::atoi(title.c_str());  // NOLINT(cert-err34-c): a list holds numbers
    (controller.*control.slider).setIntValue(number);
    sendByte(UNIT_XU, control.selector, number);
}

/// Shows and sends the state that the click has given a switch.
void switchClicked(ViewController& controller, const SwitchControl& control) {
    if (control.question != nullptr && ShowAlert(alertTitle, control.question, 1) == 0)
        return;
    const bool on = (controller.*control.button).state() == 1;
    vendor::showSwitch(controller, control, on);
    sendByte(UNIT_XU, control.selector, on ? control.valueForOn : 1 - control.valueForOn);
    vendor::enableGoverned(controller, control, on);
}

void styleClicked(ViewController& controller, const PictureStyle& style) {
    controller.DisCheckAllStyle();
    (controller.*style.button).setState(1);
    sendByte(UNIT_XU, XU_STYLE, style.number);
}

}  // namespace

void ViewController::OnSliderCompValue(const NSSlider& sender) {
    sliderMoved(*this, vendor::compensation, sender);
}
void ViewController::OnChooseCompValue(const NSPopUpButton& sender) {
    numberChosen(*this, vendor::compensation, sender);
}
void ViewController::OnSliderRgain(const NSSlider& sender) {
    sliderMoved(*this, vendor::redGain, sender);
}
void ViewController::OnChooseRgain(const NSPopUpButton& sender) {
    numberChosen(*this, vendor::redGain, sender);
}
void ViewController::OnSliderBgain(const NSSlider& sender) {
    sliderMoved(*this, vendor::blueGain, sender);
}
void ViewController::OnSpinBgain(const NSPopUpButton& sender) {
    numberChosen(*this, vendor::blueGain, sender);
}
void ViewController::OnSliderDrc(const NSSlider& sender) {
    sliderMoved(*this, vendor::dynamicRange, sender);
}
void ViewController::OnChooseDrc(const NSPopUpButton& sender) {
    numberChosen(*this, vendor::dynamicRange, sender);
}
void ViewController::OnSliderNR2D(const NSSlider& sender) {
    sliderMoved(*this, vendor::noise2D, sender);
}
void ViewController::OnBtnNR2D(const NSPopUpButton& sender) {
    numberChosen(*this, vendor::noise2D, sender);
}
void ViewController::OnSliderNR3D(const NSSlider& sender) {
    sliderMoved(*this, vendor::noise3D, sender);
}
void ViewController::OnBtnNR3D(const NSPopUpButton& sender) {
    numberChosen(*this, vendor::noise3D, sender);
}

void ViewController::OnBtnCompSwitch(const NSButton& /*sender*/) {
    switchClicked(*this, vendor::compensationSwitch);
}
void ViewController::OnBtnH264Switch(const NSButton& /*sender*/) {
    switchClicked(*this, vendor::h264Switch);
}
void ViewController::OnBtnAudioSwitch(const NSButton& /*sender*/) {
    switchClicked(*this, vendor::audioSwitch);
}
void ViewController::OnBtnFlipV(const NSButton& /*sender*/) {
    switchClicked(*this, vendor::verticalFlip);
}
void ViewController::OnBtnFlipH(const NSButton& /*sender*/) {
    switchClicked(*this, vendor::horizontalFlip);
}

void ViewController::OnBtnStyleNormal(const NSButton& /*sender*/) {
    styleClicked(*this, vendor::normalStyle);
}
void ViewController::OnBtnStyleClarity(const NSButton& /*sender*/) {
    styleClicked(*this, vendor::clarityStyle);
}
void ViewController::OnBtnStyleBright(const NSButton& /*sender*/) {
    styleClicked(*this, vendor::brightStyle);
}
void ViewController::OnBtnStylePC(const NSButton& /*sender*/) {
    styleClicked(*this, vendor::pcStyle);
}
void ViewController::OnBtnStyleClarityLed(const NSButton& /*sender*/) {
    styleClicked(*this, vendor::clarityLedStyle);
}
void ViewController::OnBtnSytleFace(const NSButton& /*sender*/) {
    styleClicked(*this, vendor::faceStyle);
}
void ViewController::OnBtnStyleDefault(const NSButton& /*sender*/) {
    styleClicked(*this, vendor::defaultStyle);
}

void ViewController::OnBtnRestore(const NSButton& /*sender*/) {
    if (ShowAlert(alertTitle, "Restore to default settings?", 1) == 0)
        return;
    sendByte(UNIT_XU, XU_RESTORE, 1);
    InitXUPage(*this);
    ReadConfig_UVC();
    InitUVCPage();
}
