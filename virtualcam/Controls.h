#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <tuple>
#include <vector>

#include "virtualcam/PictureState.h"

namespace virtualcam {

/// The camera's entities, by the id that its descriptors would give them.
enum Unit : std::uint8_t {
    kInterfaceUnit = 0,   ///< the video-control interface itself
    kCameraTerminal = 1,  ///< lens and sensor
    kProcessingUnit = 3,  ///< picture processing
    kVendorUnit = 16,     ///< the vendor's extension unit
};

/// Control selectors of the interface (UVC 1.1, table A-11).
inline constexpr std::uint8_t VC_REQUEST_ERROR_CODE_CONTROL = 2;

/// Control selectors of the camera terminal (UVC 1.1, table A-12).
enum CameraTerminalSelector : std::uint8_t {
    CT_AE_MODE_CONTROL = 2,
    CT_EXPOSURE_TIME_ABSOLUTE_CONTROL = 4,
    CT_FOCUS_ABSOLUTE_CONTROL = 6,
    CT_FOCUS_AUTO_CONTROL = 8,
    CT_ZOOM_ABSOLUTE_CONTROL = 11,
    CT_PANTILT_ABSOLUTE_CONTROL = 13,
};

/// Control selectors of the processing unit (UVC 1.1, table A-13).
enum ProcessingUnitSelector : std::uint8_t {
    PU_BACKLIGHT_COMPENSATION_CONTROL = 1,
    PU_BRIGHTNESS_CONTROL = 2,
    PU_CONTRAST_CONTROL = 3,
    PU_GAIN_CONTROL = 4,
    PU_POWER_LINE_FREQUENCY_CONTROL = 5,
    PU_HUE_CONTROL = 6,
    PU_SATURATION_CONTROL = 7,
    PU_SHARPNESS_CONTROL = 8,
    PU_GAMMA_CONTROL = 9,
    PU_WHITE_BALANCE_TEMPERATURE_CONTROL = 10,
    PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL = 11,
};

/// Control selectors of the vendor unit.
enum VendorSelector : std::uint8_t {
    XU_NR2D = 6,
    XU_NR3D = 7,
    XU_VERSION = 9,
    XU_COMP_SWITCH = 10,
    XU_COMP_VALUE = 11,
    XU_DRC = 12,
    XU_STYLE = 13,
    XU_BGAIN = 14,
    XU_RGAIN = 15,
    XU_H264_SWITCH = 18,
    XU_RESTORE = 23,
    XU_FLIP_V = 24,
    XU_FLIP_H = 25,
    XU_AUDIO_SWITCH = 26,
};

/// Class-specific request codes (UVC 1.1, table A-8).
enum Request : std::uint8_t {
    SET_CUR = 0x01,
    GET_CUR = 0x81,
    GET_MIN = 0x82,
    GET_MAX = 0x83,
    GET_RES = 0x84,
    GET_LEN = 0x85,
    GET_INFO = 0x86,
    GET_DEF = 0x87,
};

/// Bits of a GET_INFO answer (UVC 1.1, table 4-3).
enum Info : std::uint8_t {
    kInfoGet = 0x01,         ///< value reads are supported
    kInfoSet = 0x02,         ///< value writes are supported
    kInfoDisabled = 0x04,    ///< an automatic mode holds the control just now
    kInfoAutoUpdate = 0x08,  ///< the value changes by itself
};

/// Names one control of the camera.
struct ControlId {
    std::uint8_t unit = 0;
    std::uint8_t selector = 0;

    bool operator==(const ControlId&) const = default;
    bool operator<(const ControlId& other) const {
        return std::tie(unit, selector) < std::tie(other.unit, other.selector);
    }
};

/// How a control's value is made and which requests it takes.
enum class ControlKind {
    number,   ///< one or two integers with limits
    boolean,  ///< 0 or 1; no minimum, maximum or resolution
    choice,   ///< a number from a short list; no minimum, maximum or resolution
    bitmap,   ///< exactly one bit; GET_RES gives the bits that are supported
    text,     ///< the version text, zero-padded
    trigger,  ///< writing 1 does something; there is no value
};

/// The limits of one integer of a control, in the control's unit.
struct Limits {
    std::int32_t minimum = 0;  ///< below 0: the control is signed
    std::int32_t maximum = 1;
    std::int32_t resolution = 1;  ///< legal values are whole steps above `minimum`
    std::int32_t standard = 0;    ///< what GET_DEF answers
};

/// How an automatic mode moves a control while the camera delivers pictures.
struct Automatic {
    ControlId mode;                 ///< the control that switches the automatic mode
    std::int32_t modeValue = 1;     ///< the value of `mode` that hands over the control
    std::int32_t target = 0;        ///< where the value settles
    std::int32_t swing = 0;         ///< how far the scene pulls it either way, over some seconds
    std::int32_t stepPerFrame = 1;  ///< how fast it moves
};

/// Everything about one control but its current value.
struct ControlRow {
    ControlId id;
    ControlKind kind = ControlKind::number;
    std::uint16_t length = 0;  ///< bytes of the value on the wire, little-endian
    std::uint8_t info = kInfoGet | kInfoSet;
    Limits limits = {};
    int PictureState::*picture = nullptr;  ///< what it does to the picture; null: nothing
    /// What XU_RESTORE sets, where that is not what GET_DEF answers.
    std::optional<std::int32_t> vendorDefault = std::nullopt;
    std::optional<Automatic> automatic = std::nullopt;
    /// The second integer of a control of two (tilt beside pan); each takes half of `length`.
    std::optional<Limits> secondLimits = std::nullopt;
    int PictureState::*secondPicture = nullptr;

    bool isSigned() const { return limits.minimum < 0; }
};

/// Every control of a camera that lacks nothing.
const std::vector<ControlRow>& studioControls();

/// The controls of an older camera: the same without lens and motors (zoom, focus, pan, tilt).
const std::vector<ControlRow>& classicControls();

}  // namespace virtualcam
