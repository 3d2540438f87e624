#include "app/ViewController.h"

#include <array>
#include <utility>

#include "pages/vendor/VendorPage.h"

namespace {

#define ACTION(name) IBAction<&ViewController::name>(#name ":")
constexpr std::array actionTable{
    ACTION(OnCbxDeviceChanged), ACTION(OnBtnOpenCamera),   ACTION(OnSliderCompValue),
    ACTION(OnChooseCompValue),  ACTION(OnSliderRgain),     ACTION(OnChooseRgain),
    ACTION(OnSliderBgain),      ACTION(OnSpinBgain),       ACTION(OnSliderDrc),
    ACTION(OnChooseDrc),        ACTION(OnSliderNR2D),      ACTION(OnBtnNR2D),
    ACTION(OnSliderNR3D),       ACTION(OnBtnNR3D),         ACTION(OnBtnCompSwitch),
    ACTION(OnBtnH264Switch),    ACTION(OnBtnAudioSwitch),  ACTION(OnBtnFlipV),
    ACTION(OnBtnFlipH),         ACTION(OnBtnStyleNormal),  ACTION(OnBtnStyleClarity),
    ACTION(OnBtnStyleBright),   ACTION(OnBtnStylePC),      ACTION(OnBtnStyleClarityLed),
    ACTION(OnBtnSytleFace),     ACTION(OnBtnStyleDefault), ACTION(OnBtnRestore),
    ACTION(OnSliderBright),     ACTION(OnSliderContrast),  ACTION(OnSliderHue),
    ACTION(OnSliderSaturation), ACTION(OnSliderSharpness), ACTION(OnSliderGama),
    ACTION(OnSliderWB),         ACTION(OnSliderBackLight), ACTION(OnSliderGain),
    ACTION(OnSliderZoom),       ACTION(OnSliderFocus),     ACTION(OnSliderAutoExposure),
    ACTION(OnSliderPano),       ACTION(OnSliderTile),      ACTION(OnBtnAutoWB),
    ACTION(OnBtnAutoFocus),     ACTION(OnBtnAutoExposure), ACTION(OnBtnUvcDefault),
    ACTION(OnAntiFlicker60HZ),  ACTION(OnAntiFlicker50HZ)};
#undef ACTION

void showSwitchesOff(const ViewController& controller) {
    for (const vendor::SwitchControl* control : vendor::switches) {
        const NSButton& button = controller.*control->button;
        button.setImage(NSImage::imageNamed("button_off.png"));
        button.setBordered(false);
    }
}

void fillLists(const ViewController& controller) {
    for (const vendor::ValueControl* control : vendor::values) {
        const NSPopUpButton& list = controller.*control->list;
        vendor::fillList(list, control->highest, control->lowest);
        vendor::chooseNumber(list, 0);
    }
}

}  // namespace

void ViewController::viewDidLoad() {
    NSViewController::viewDidLoad();
    showSwitchesOff(*this);
    m_cbxDevice.removeAllItems();
    fillLists(*this);
    RegisterHidEvent();
    setTitle("Quelvo");
}

void ViewController::setRepresentedObject(std::shared_ptr<NSObject> representedObject) {
    NSViewController::setRepresentedObject(std::move(representedObject));
}

std::span<const NSAction> ViewController::actions() const {
    return actionTable;
}
