#include "camera/ControlTable.h"

#include <algorithm>
#include <array>

namespace {

// The vendor unit's sizes size only the question for a control's length; the camera's answer to it
// sizes the transfer.
constexpr std::array<UVCControlInfo, 31> table{{
    {cameraTerminalID, CT_ZOOM_ABSOLUTE_CONTROL, 2},
    {cameraTerminalID, CT_FOCUS_ABSOLUTE_CONTROL, 2},
    {cameraTerminalID, CT_FOCUS_AUTO_CONTROL, 1},
    {cameraTerminalID, CT_AE_MODE_CONTROL, 1},
    {cameraTerminalID, CT_EXPOSURE_TIME_ABSOLUTE_CONTROL, 4},
    {cameraTerminalID, CT_PANTILT_ABSOLUTE_CONTROL, 8},
    {processingUnitID, PU_BRIGHTNESS_CONTROL, 2},
    {processingUnitID, PU_CONTRAST_CONTROL, 2},
    {processingUnitID, PU_HUE_CONTROL, 2},
    {processingUnitID, PU_SATURATION_CONTROL, 2},
    {processingUnitID, PU_SHARPNESS_CONTROL, 2},
    {processingUnitID, PU_GAMMA_CONTROL, 2},
    {processingUnitID, PU_WHITE_BALANCE_TEMPERATURE_CONTROL, 2},
    {processingUnitID, PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL, 1},
    {processingUnitID, PU_BACKLIGHT_COMPENSATION_CONTROL, 2},
    {processingUnitID, PU_GAIN_CONTROL, 2},
    {processingUnitID, PU_POWER_LINE_FREQUENCY_CONTROL, 1},
    {extensionUnitID, XU_NR2D, 2},
    {extensionUnitID, XU_NR3D, 2},
    {extensionUnitID, XU_VERSION, 2},
    {extensionUnitID, XU_COMP_SWITCH, 2},
    {extensionUnitID, XU_COMP_VALUE, 2},
    {extensionUnitID, XU_DRC, 2},
    {extensionUnitID, XU_STYLE, 2},
    {extensionUnitID, XU_BGAIN, 2},
    {extensionUnitID, XU_RGAIN, 2},
    {extensionUnitID, XU_H264_SWITCH, 2},
    {extensionUnitID, XU_RESTORE, 2},
    {extensionUnitID, XU_FLIP_V, 2},
    {extensionUnitID, XU_FLIP_H, 2},
    {extensionUnitID, XU_AUDIO_SWITCH, 2},
}};

/// The unit id of each unit kind; the kind is the index.
constexpr std::array<std::int32_t, 3> unitIDs{extensionUnitID, processingUnitID, cameraTerminalID};

}  // namespace

const UVCControlInfo* findControl(std::int32_t unitKind, std::int32_t selector) {
    if (unitKind < UNIT_XU || unitKind > UNIT_CT)
        return nullptr;
    const std::int32_t unit = unitIDs[static_cast<std::size_t>(unitKind)];
    const auto* row = std::ranges::find_if(table, [&](const UVCControlInfo& control) {
        return control.unit == unit && control.selector == selector;
    });
    return row == table.end() ? nullptr : row;
}

bool isControlSize(std::int32_t size) {
    return std::ranges::find(table, size, &UVCControlInfo::size) != table.end();
}
