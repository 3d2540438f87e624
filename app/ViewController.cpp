#include "app/ViewController.h"

#include <array>
#include <utility>

#include "pages/vendor/VendorPage.h"

namespace {

constexpr std::array actionTable{
    IBAction<&ViewController::OnCbxDeviceChanged>("OnCbxDeviceChanged:"),
    IBAction<&ViewController::OnBtnOpenCamera>("OnBtnOpenCamera:"),
};

void showTogglesOff(ViewController& controller) {
    for (const auto* toggle :
         {&vendor::compensationSwitch, &vendor::h264Switch, &vendor::audioSwitch,
          &vendor::horizontalFlip, &vendor::verticalFlip}) {
        const NSButton& button = controller.*toggle->button;
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
    showTogglesOff(*this);
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
