#include "app/ViewController.h"

#include <array>
#include <utility>

#include "pages/vendor/VendorPage.h"

namespace {

#define ACTION(name) IBAction<&ViewController::name>(#name ":"),
#define VALUE_ACTIONS(row, selector, slider, sliderAction, list, listAction, ...) \
    ACTION(sliderAction) ACTION(listAction)
#define SWITCH_ACTION(row, selector, button, action, ...) ACTION(action)
#define STYLE_ACTION(number, button, action) ACTION(action)
#define SLIDER_ACTION(row, action, ...) ACTION(action)
// clang-format off
constexpr std::array actionTable{
    ACTION(OnCbxDeviceChanged)
    ACTION(OnBtnOpenCamera)
    ENUMERATE_VENDOR_VALUES(VALUE_ACTIONS)
    ENUMERATE_VENDOR_SWITCHES(SWITCH_ACTION)
    ENUMERATE_PICTURE_STYLES(STYLE_ACTION)
    ACTION(OnBtnRestore)
    ENUMERATE_STANDARD_SLIDERS(SLIDER_ACTION)
    ACTION(OnBtnAutoWB)
    ACTION(OnBtnAutoFocus)
    ACTION(OnBtnAutoExposure)
    ACTION(OnBtnUvcDefault)
    ACTION(OnAntiFlicker60HZ)
    ACTION(OnAntiFlicker50HZ)
};
// clang-format on
#undef SLIDER_ACTION
#undef STYLE_ACTION
#undef SWITCH_ACTION
#undef VALUE_ACTIONS
#undef ACTION

void showSwitchesOff(ViewController& controller) {
    for (const auto* control :
         {&vendor::compensationSwitch, &vendor::h264Switch, &vendor::audioSwitch,
          &vendor::horizontalFlip, &vendor::verticalFlip}) {
        const NSButton& button = controller.*control->button;
        button.setImage(NSImage::imageNamed("button_off.png"));
        button.setBordered(false);
    }
}

void emptyLists(ViewController& controller) {
    for (const auto* control : {&vendor::compensation, &vendor::blueGain, &vendor::redGain,
                                &vendor::dynamicRange, &vendor::noise2D, &vendor::noise3D})
        (controller.*control->list).removeAllItems();
    controller.m_cbxDevice.removeAllItems();
}

void fillLists(ViewController& controller) {
    for (const auto* control : {&vendor::compensation, &vendor::redGain, &vendor::blueGain,
                                &vendor::dynamicRange, &vendor::noise2D, &vendor::noise3D}) {
        const NSPopUpButton& list = controller.*control->list;
        vendor::fillList(list, control->highest, control->lowest);
        vendor::chooseNumber(list, 0);
    }
}

}  // namespace

void ViewController::viewDidLoad() {
    NSViewController::viewDidLoad();
    showSwitchesOff(*this);
    emptyLists(*this);
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
