#include "virtualcam/camera/Controls.h"

#include <algorithm>

namespace virtualcam {
namespace {

using enum ControlKind;
using Picture = PictureState;

constexpr std::uint8_t readWrite = infoGet | infoSet;
constexpr std::uint8_t movesByItself = readWrite | infoAutoUpdate;
constexpr std::int32_t degree = 3600;  // arc seconds

constexpr ControlId autoFocusID{cameraTerminalID, CT_FOCUS_AUTO_CONTROL};
constexpr ControlId aeModeID{cameraTerminalID, CT_AE_MODE_CONTROL};
constexpr ControlId autoWhiteID{processingUnitID, PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL};

constexpr Automatic followsFocus{autoFocusID, 1, 160, 12, 16};
constexpr Automatic followsLight{aeModeID, exposureAperturePriority, 167, 12, 6};
constexpr Automatic followsColour{autoWhiteID, 1, 5200, 180, 40};

// Limits are {minimum, maximum, resolution, default}; the comment gives the unit.
std::vector<ControlRow> cameraTerminal() {
    const auto row = [](std::uint8_t selector, ControlKind kind, std::uint16_t length,
                        std::uint8_t info, Limits limits, int Picture::*picture) {
        return ControlRow{{cameraTerminalID, selector}, kind, length, info, limits, picture};
    };
    auto zoom =  // lens position, one to three times
        row(CT_ZOOM_ABSOLUTE_CONTROL, number, 2, readWrite, {0, 1000, 1, 0}, &Picture::zoom);
    auto focus =  // lens position
        row(CT_FOCUS_ABSOLUTE_CONTROL, number, 2, movesByItself, {0, 1023, 1, 160},
            &Picture::focus);
    focus.automatic = followsFocus;
    auto autoFocus =  // switch
        row(CT_FOCUS_AUTO_CONTROL, boolean, 1, readWrite, {0, 1, 1, 1}, nullptr);
    auto aeMode =  // see `AutoExposureMode`
        row(CT_AE_MODE_CONTROL, bitmap, 1, readWrite,
            {0, 0, exposureManual | exposureAperturePriority, exposureAperturePriority}, nullptr);
    auto exposure =  // 100 microseconds; a picture lasts 333
        row(CT_EXPOSURE_TIME_ABSOLUTE_CONTROL, number, 4, movesByItself, {1, 333, 1, 167},
            &Picture::exposureTime);
    exposure.automatic = followsLight;
    auto panTilt =  // arc seconds; the motors stop at whole degrees
        row(CT_PANTILT_ABSOLUTE_CONTROL, number, 8, readWrite,
            {-180 * degree, 180 * degree, degree, 0}, &Picture::pan);
    panTilt.secondLimits = {-180 * degree, 180 * degree, degree, 0};
    panTilt.secondPicture = &Picture::tilt;
    return {zoom, focus, autoFocus, aeMode, exposure, panTilt};
}

std::vector<ControlRow> processingUnit() {
    const auto level = [](std::uint8_t selector, Limits limits, int Picture::*picture) {
        return ControlRow{{processingUnitID, selector}, number, 2, readWrite, limits, picture};
    };
    auto temperature =  // kelvin
        level(PU_WHITE_BALANCE_TEMPERATURE_CONTROL, {2000, 10000, 1, 6500}, &Picture::whiteBalance);
    temperature.info = movesByItself;
    temperature.automatic = followsColour;
    return {
        level(PU_BRIGHTNESS_CONTROL, {-255, 255, 1, 7}, &Picture::brightness),  // level
        level(PU_CONTRAST_CONTROL, {0, 255, 1, 7}, &Picture::contrast),         // level
        level(PU_HUE_CONTROL, {-180, 180, 1, 7}, &Picture::hue),                // degrees
        level(PU_SATURATION_CONTROL, {0, 255, 1, 100}, &Picture::saturation),   // per cent
        level(PU_SHARPNESS_CONTROL, {0, 255, 1, 9}, &Picture::sharpness),       // steps
        level(PU_GAMMA_CONTROL, {1, 500, 1, 238}, &Picture::gamma),             // hundredths
        temperature,
        {autoWhiteID, boolean, 1, readWrite, {0, 1, 1, 1}, &Picture::autoWhiteBalance},
        level(PU_BACKLIGHT_COMPENSATION_CONTROL, {0, 10, 1, 0}, &Picture::backlight),  // steps
        level(PU_GAIN_CONTROL, {0, 255, 1, 6}, &Picture::gain),                        // steps
        {{processingUnitID, PU_POWER_LINE_FREQUENCY_CONTROL},  // see `PowerLineFrequency`
         choice,
         1,
         readWrite,
         {powerLineDisabled, powerLine60Hz, 1, powerLine60Hz},
         &Picture::powerLine},
    };
}

std::vector<ControlRow> vendorUnit() {
    const auto level = [](std::uint8_t selector, std::uint16_t length, Limits limits,
                          int Picture::*picture) {
        return ControlRow{{extensionUnitID, selector}, number, length, readWrite, limits, picture};
    };
    auto style = level(XU_STYLE, 1, {0, 6, 1, 0}, &Picture::style);  // preset
    style.vendorDefault = 6;
    return {
        level(XU_NR2D, 1, {0, 6, 1, 3}, &Picture::noiseReduction2D),  // steps
        level(XU_NR3D, 1, {0, 8, 1, 4}, &Picture::noiseReduction3D),  // steps
        {{extensionUnitID, XU_VERSION}, text, versionSize, infoGet},
        level(XU_COMP_SWITCH, 1, {0, 1, 1, 1}, &Picture::exposureCompensationOff),  // 0 is on
        level(XU_COMP_VALUE, 2, {-7, 7, 1, 0}, &Picture::exposureCompensation),     // 1/5 stop
        level(XU_DRC, 2, {0, 8, 1, 0}, &Picture::dynamicRange),                     // steps
        style,
        level(XU_BGAIN, 2, {-10, 10, 1, 0}, &Picture::blueGain),  // 4 %
        level(XU_RGAIN, 2, {-10, 10, 1, 0}, &Picture::redGain),   // 4 %
        level(XU_H264_SWITCH, 1, {0, 1, 1, 1}, nullptr),          // switch
        {{extensionUnitID, XU_RESTORE}, trigger, 1, infoSet},
        level(XU_FLIP_V, 1, {0, 1, 1, 0}, &Picture::flipVertical),    // switch
        level(XU_FLIP_H, 1, {0, 1, 1, 0}, &Picture::flipHorizontal),  // switch
        level(XU_AUDIO_SWITCH, 1, {0, 1, 1, 0}, nullptr),             // switch
    };
}

bool needsLensOrMotor(const ControlRow& row) {
    return row.id.unit == cameraTerminalID && row.id.selector != CT_AE_MODE_CONTROL &&
           row.id.selector != CT_EXPOSURE_TIME_ABSOLUTE_CONTROL;
}

}  // namespace

const std::vector<ControlRow>& studioControls() {
    static const std::vector<ControlRow> rows = [] {
        std::vector<ControlRow> all = cameraTerminal();
        std::ranges::copy(processingUnit(), std::back_inserter(all));
        std::ranges::copy(vendorUnit(), std::back_inserter(all));
        return all;
    }();
    return rows;
}

const std::vector<ControlRow>& classicControls() {
    static const std::vector<ControlRow> rows = [] {
        std::vector<ControlRow> fewer = studioControls();
        std::erase_if(fewer, needsLensOrMotor);
        return fewer;
    }();
    return rows;
}

}  // namespace virtualcam
