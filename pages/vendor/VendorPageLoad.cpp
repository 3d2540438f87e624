// Fills the vendor page from the camera.

#include <array>
#include <optional>
#include <string_view>

#include "camera/ControlTable.h"
#include "camera/Transfer.h"
#include "pages/vendor/VendorPage.h"
#include "pages/vendor/VersionLabel.h"

namespace {

/// The buffer of every vendor read.
using VendorBuffer = std::array<char, versionSize>;

std::int64_t read(std::int32_t selector, VendorBuffer& buffer) {
    return Capture_Transfer(static_cast<std::uint32_t>(selector), captureRead, buffer.data(),
                            sizeof buffer, UNIT_XU);
}

/// Reads a vendor value, one signed byte; nothing when the camera does not answer.
std::optional<std::int8_t> readValue(std::int32_t selector) {
    VendorBuffer buffer{};
    if (read(selector, buffer) != 0)
        return std::nullopt;
    return static_cast<std::int8_t>(buffer[0]);
}

void loadGainRange(ViewController& controller) {
    const vendor::GainRange range = vendor::readGainRange();
    for (const vendor::ValueControl* control : vendor::values)
        if (control->gain)
            vendor::setGainRange(controller, *control, range);
}

void loadVersion(ViewController& controller) {
    VendorBuffer buffer{};
    const std::int64_t status = read(XU_VERSION, buffer);
    const std::string_view bytes(buffer.data(), buffer.size());
    controller.m_lableVersion.setStringValue(
        versionLabel(status, bytes.substr(0, bytes.find('\0'))));
}

void loadStyle(ViewController& controller) {
    controller.DisCheckAllStyle();
    const auto number = readValue(XU_STYLE);
    for (const vendor::PictureStyle* style : vendor::styles)
        if (number == style->number)
            (controller.*style->button).setState(1);
}

void loadSliders(ViewController& controller) {
    for (const vendor::ValueControl* control : vendor::values)
        (controller.*control->slider).setIntValue(readValue(control->selector).value_or(0));
}

/// Shows each switch as the camera has it; one that does not answer is off.
void loadSwitches(ViewController& controller) {
    for (const vendor::SwitchControl* control : vendor::switches) {
        const auto value = readValue(control->selector);
        const bool on = value && (*value != 0) == (control->valueForOn != 0);
        vendor::showSwitch(controller, *control, on);
        vendor::enableGoverned(controller, *control, on);
    }
}

/// Makes each list show its slider's number, which the slider's range may have held back.
void showNumbers(ViewController& controller) {
    for (const vendor::ValueControl* control : vendor::values)
        vendor::chooseNumber(controller.*control->list, (controller.*control->slider).intValue());
}

}  // namespace

void InitXUPage(ViewController& controller) {
    loadGainRange(controller);
    loadVersion(controller);
    loadStyle(controller);
    loadSliders(controller);
    loadSwitches(controller);
    showNumbers(controller);
}
