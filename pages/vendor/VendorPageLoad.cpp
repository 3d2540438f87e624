// Fills the vendor page from the camera.

#include <array>
#include <string_view>

#include "camera/Transfer.h"
#include "pages/vendor/VendorPage.h"
#include "pages/vendor/VersionLabel.h"

namespace {

/// The buffer of every vendor read; as long as the longest control, the version text.
using VendorBuffer = std::array<char, 24>;

/// Reads a vendor control into a cleared buffer, so that a failed read shows 0.
std::int64_t read(std::int32_t selector, VendorBuffer& buffer) {
    buffer.fill('\0');
    return Capture_Transfer(static_cast<std::uint32_t>(selector), captureRead, buffer.data(),
                            sizeof buffer, UNIT_XU);
}

/// Reads a vendor value: one signed byte.
std::int8_t readValue(std::int32_t selector) {
    VendorBuffer buffer;
    read(selector, buffer);
    return static_cast<std::int8_t>(buffer[0]);
}

void loadGainRange(ViewController& controller) {
    const vendor::GainRange range = vendor::readGainRange();
    vendor::setGainRange(controller, vendor::redGain, range);
    vendor::setGainRange(controller, vendor::blueGain, range);
}

void loadVersion(ViewController& controller) {
    VendorBuffer buffer;
    const std::int64_t status = read(XU_VERSION, buffer);
    const std::string_view bytes(buffer.data(), buffer.size());
    controller.m_lableVersion.setStringValue(
        versionLabel(status, bytes.substr(0, bytes.find('\0'))));
}

void loadStyle(ViewController& controller) {
    controller.DisCheckAllStyle();
    // A negative style becomes a number that no style has.
    const auto style = static_cast<std::uint8_t>(readValue(XU_STYLE));
    if (style < vendor::styleButtons.size())
        (controller.*vendor::styleButtons[style]).setState(1);
}

void loadSliders(ViewController& controller) {
    for (const auto* control : {&vendor::noise2D, &vendor::noise3D, &vendor::dynamicRange,
                                &vendor::redGain, &vendor::blueGain, &vendor::compensation})
        (controller.*control->slider).setIntValue(readValue(control->selector));
}

/// Reads a switch, shows it, and returns whether it is on.
bool loadSwitch(ViewController& controller, const vendor::SwitchControl& control) {
    const bool nonZero = readValue(control.selector) != 0;
    const bool on = nonZero == (control.valueForOn != 0);
    vendor::showSwitch(controller.*control.button, on);
    return on;
}

/// Makes each list show its slider's number, which the slider's range may have held back.
void showNumbers(ViewController& controller) {
    for (const auto* control : {&vendor::redGain, &vendor::blueGain, &vendor::dynamicRange,
                                &vendor::compensation, &vendor::noise2D, &vendor::noise3D})
        vendor::chooseNumber(controller.*control->list, (controller.*control->slider).intValue());
}

}  // namespace

void InitXUPage(ViewController& controller) {
    loadGainRange(controller);
    loadVersion(controller);
    loadStyle(controller);
    loadSliders(controller);
    const bool compensated = loadSwitch(controller, vendor::compensationSwitch);
    controller.m_SliderCompValue.setEnabled(compensated);
    controller.m_SpinCompValue.setEnabled(compensated);
    for (const auto* control : {&vendor::h264Switch, &vendor::audioSwitch, &vendor::horizontalFlip,
                                &vendor::verticalFlip})
        loadSwitch(controller, *control);
    showNumbers(controller);
}
