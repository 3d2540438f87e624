#pragma once

#include <cstdint>

// Constants of the USB Device Class Definition for Video Devices, revision 1.1 ("UVC 1.1"), as far
// as the application, the back ends and the built-in cameras use them.

/// The class and the subclasses of the interfaces (tables ).
inline constexpr std::uint8_t CC_VIDEO = 14;
inline constexpr std::uint8_t SC_VIDEOCONTROL = 1;
inline constexpr std::uint8_t SC_VIDEOSTREAMING = 2;

/// bmRequestType of a class request to an interface (4.1; USB 2.0, table 9-2).
inline constexpr std::uint8_t requestToInterface = 0x21;
inline constexpr std::uint8_t requestFromInterface = 0xA1;

/// Class-specific request codes (table A-8).
enum RequestCode : std::uint8_t {
    SET_CUR = 0x01,
    GET_CUR = 0x81,
    GET_MIN = 0x82,
    GET_MAX = 0x83,
    GET_RES = 0x84,
    GET_LEN = 0x85,
    GET_INFO = 0x86,
    GET_DEF = 0x87,
};

/// Bytes of the reply to GET_LEN (4.1.2).
inline constexpr std::int32_t lengthReplySize = 2;

/// Entity ids, the high byte of wIndex. The standard leaves them to the camera; these are the ones
/// that the camera family of this program has, and its descriptors are not read.
enum EntityID : std::uint8_t {
    cameraTerminalID = 1,  ///< lens and sensor
    processingUnitID = 3,  ///< picture processing
    extensionUnitID = 16,  ///< the vendor's own unit
};

/// Selectors of the camera terminal (table A-12), the high byte of wValue.
enum CameraTerminalSelector : std::uint8_t {
    CT_AE_MODE_CONTROL = 2,                 ///< bitmap: see `AutoExposureMode`
    CT_EXPOSURE_TIME_ABSOLUTE_CONTROL = 4,  ///< 100 microseconds
    CT_FOCUS_ABSOLUTE_CONTROL = 6,          ///< the camera's own units
    CT_FOCUS_AUTO_CONTROL = 8,              ///< 0 off, 1 on
    CT_ZOOM_ABSOLUTE_CONTROL = 11,          ///< the camera's own units
    CT_PANTILT_ABSOLUTE_CONTROL = 13,       ///< two halves, arc seconds: pan, tilt
};

/// Bytes of the longest standard control that is used, pan and tilt (4.2.2.1.14).
inline constexpr std::int32_t longestControl = 8;

/// The bits of CT_AE_MODE_CONTROL (4.2.2.1.2).
enum AutoExposureMode : std::uint8_t {
    exposureManual = 1,            ///< time and iris by hand
    exposureAutomatic = 2,         ///< neither by hand
    exposureShutterPriority = 4,   ///< the time by hand
    exposureAperturePriority = 8,  ///< the iris by hand: the time is the camera's
};

/// Selectors of the processing unit (table A-13); levels are in the camera's own units.
enum ProcessingUnitSelector : std::uint8_t {
    PU_BACKLIGHT_COMPENSATION_CONTROL = 1,
    PU_BRIGHTNESS_CONTROL = 2,
    PU_CONTRAST_CONTROL = 3,
    PU_GAIN_CONTROL = 4,
    PU_POWER_LINE_FREQUENCY_CONTROL = 5,  ///< see `PowerLineFrequency`
    PU_HUE_CONTROL = 6,
    PU_SATURATION_CONTROL = 7,
    PU_SHARPNESS_CONTROL = 8,
    PU_GAMMA_CONTROL = 9,
    PU_WHITE_BALANCE_TEMPERATURE_CONTROL = 10,       ///< kelvin
    PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL = 11,  ///< 0 manual, 1 automatic
};

/// The values of PU_POWER_LINE_FREQUENCY_CONTROL (4.2.2.3.6).
enum PowerLineFrequency : std::uint8_t {
    powerLineDisabled = 0,
    powerLine50Hz = 1,
    powerLine60Hz = 2,
};
