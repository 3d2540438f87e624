#pragma once

#include <cstdint>

/// One control of the camera. The unit ids are fixed; the camera's descriptors are not read.
struct UVCControlInfo {
    std::int32_t unit;      ///< UVC entity id: 1 camera terminal, 3 processing unit, 16 vendor unit
    std::int32_t selector;  ///< UVC control selector within that unit
    std::int32_t size;      ///< bytes: 1, 2, 4 or 8
};

/// The least and the greatest value of a control, in the control's own units.
struct UVCControlRange {
    std::int32_t min;
    std::int32_t max;
};

/// The kinds of unit by which the pages address a control.
enum UnitKind : std::int32_t {
    UNIT_XU = 0,  ///< the vendor extension unit, unit id 16
    UNIT_PU = 1,  ///< the processing unit, unit id 3
    UNIT_CT = 2,  ///< the camera terminal, unit id 1
};

/// UVC entity ids, as this camera family numbers them.
inline constexpr std::int32_t cameraTerminalID = 1;
inline constexpr std::int32_t processingUnitID = 3;
inline constexpr std::int32_t extensionUnitID = 16;

/// Selectors of the camera terminal (UVC 1.1, table A-12).
enum CameraTerminalSelector : std::int32_t {
    CT_AE_MODE_CONTROL = 2,                 ///< bitmap: 1 manual, 8 aperture priority
    CT_EXPOSURE_TIME_ABSOLUTE_CONTROL = 4,  ///< 100 microseconds
    CT_FOCUS_ABSOLUTE_CONTROL = 6,          ///< the camera's own units
    CT_FOCUS_AUTO_CONTROL = 8,              ///< 0 off, 1 on
    CT_ZOOM_ABSOLUTE_CONTROL = 11,          ///< the camera's own units
    CT_PANTILT_ABSOLUTE_CONTROL = 13,       ///< two halves, arc seconds: pan, tilt
};

/// Values of CT_AE_MODE_CONTROL (UVC 1.1, 4.2.2.1.2) that the system uses.
inline constexpr std::uint8_t exposureManual = 1;
inline constexpr std::uint8_t exposureAutomatic = 8;  ///< aperture priority

/// Selectors of the processing unit (UVC 1.1, table A-13); levels in the camera's own units.
enum ProcessingUnitSelector : std::int32_t {
    PU_BACKLIGHT_COMPENSATION_CONTROL = 1,
    PU_BRIGHTNESS_CONTROL = 2,
    PU_CONTRAST_CONTROL = 3,
    PU_GAIN_CONTROL = 4,
    PU_POWER_LINE_FREQUENCY_CONTROL = 5,  ///< 0 disabled, 1 for 50 Hz, 2 for 60 Hz
    PU_HUE_CONTROL = 6,
    PU_SATURATION_CONTROL = 7,
    PU_SHARPNESS_CONTROL = 8,
    PU_GAMMA_CONTROL = 9,
    PU_WHITE_BALANCE_TEMPERATURE_CONTROL = 10,       ///< kelvin
    PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL = 11,  ///< 0 manual, 1 automatic
};

/// Selectors of the vendor extension unit. All but the version are one signed byte.
enum ExtensionUnitSelector : std::int32_t {
    XU_NR2D = 6,           ///< 2D noise reduction, 0 to 6
    XU_NR3D = 7,           ///< 3D noise reduction, 0 to 8
    XU_VERSION = 9,        ///< read only: firmware version text, at most 24 bytes
    XU_COMP_SWITCH = 10,   ///< exposure compensation: 0 on, 1 off
    XU_COMP_VALUE = 11,    ///< exposure compensation, -7 to 7
    XU_DRC = 12,           ///< dynamic range compression, 0 to 8
    XU_STYLE = 13,         ///< picture style, 0 to 6
    XU_BGAIN = 14,         ///< blue gain: 0 to 10 under automatic white balance, else -10 to 10
    XU_RGAIN = 15,         ///< red gain, ranges as for blue
    XU_H264_SWITCH = 18,   ///< H.264 stream, 1 on; acts after the camera restarts
    XU_RESTORE = 23,       ///< write only: 1 restores the vendor defaults
    XU_FLIP_V = 24,        ///< vertical flip, 1 on
    XU_FLIP_H = 25,        ///< horizontal flip, 1 on
    XU_AUDIO_SWITCH = 26,  ///< audio, 1 on; acts after the camera restarts
};

/// Returns the row of a selector of a unit kind, or null when there is none.
const UVCControlInfo* findControl(std::int32_t unitKind, std::int32_t selector);
