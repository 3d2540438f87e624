// What the user changes on the vendor page, sent to the camera at once.

#include <cstdlib>
#include <string>

#include "camera/Transfer.h"
#include "pages/vendor/ShowAlert.h"
#include "pages/vendor/VendorPage.h"
#include "platform/NSLog.h"

namespace {

using vendor::SwitchControl;
using vendor::Trace;
using vendor::ValueControl;

constexpr const char* alertTitle = "Notice";

bool isGain(const ValueControl& control) {
    return control.selector == XU_RGAIN || control.selector == XU_BGAIN;
}

void sliderMoved(ViewController& controller, const ValueControl& control, const NSSlider& sender) {
    if (control.trace == Trace::sliderAndList)
        NSLog("slider:%d", sender.intValue());
    // Automatic white balance may have been switched since the range was chosen.
    if (isGain(control))
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
    const NSButton& button = controller.*control.button;
    const bool on = button.state() == 1;
    vendor::showSwitch(button, on);
    sendByte(UNIT_XU, control.selector, on ? control.valueForOn : 1 - control.valueForOn);
    if (control.selector == XU_COMP_SWITCH) {
        controller.m_SpinCompValue.setEnabled(on);
        controller.m_SliderCompValue.setEnabled(on);
    }
}

void styleClicked(ViewController& controller, std::int32_t style, const NSButton& button) {
    controller.DisCheckAllStyle();
    button.setState(1);
    sendByte(UNIT_XU, XU_STYLE, style);
}

}  // namespace

#define DEFINE_VALUE(row, selector, slider, sliderAction, list, listAction, ...) \
    void ViewController::sliderAction(const NSSlider& sender) {                  \
        sliderMoved(*this, vendor::row, sender);                                 \
    }                                                                            \
    void ViewController::listAction(const NSPopUpButton& sender) {               \
        numberChosen(*this, vendor::row, sender);                                \
    }
ENUMERATE_VENDOR_VALUES(DEFINE_VALUE)
#undef DEFINE_VALUE

#define DEFINE_SWITCH(row, selector, button, action, ...)     \
    void ViewController::action(const NSButton& /*sender*/) { \
        switchClicked(*this, vendor::row);                    \
    }
ENUMERATE_VENDOR_SWITCHES(DEFINE_SWITCH)
#undef DEFINE_SWITCH

#define DEFINE_STYLE(number, button, action)                  \
    void ViewController::action(const NSButton& /*sender*/) { \
        styleClicked(*this, number, button);                  \
    }
ENUMERATE_PICTURE_STYLES(DEFINE_STYLE)
#undef DEFINE_STYLE

void ViewController::OnBtnRestore(const NSButton& /*sender*/) {
    if (ShowAlert(alertTitle, "Restore to default settings?", 1) == 0)
        return;
    sendByte(UNIT_XU, XU_RESTORE, 1);
    InitXUPage(*this);
    ReadConfig_UVC();
    InitUVCPage();
}
