#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <tuple>
#include <vector>

#include "platform/UVC.h"
#include "platform/VendorUnit.h"
#include "virtualcam/scene/PictureState.h"

namespace virtualcam {

/// The entity id of the video-control interface itself.
inline constexpr std::uint8_t interfaceUnit = 0;

/// Control selectors of the interface (UVC 1.1, table A-11).
inline constexpr std::uint8_t VC_REQUEST_ERROR_CODE_CONTROL = 2;

/// Bits of a GET_INFO answer (UVC 1.1, table 4-3).
enum Info : std::uint8_t {
    infoGet = 0x01,         ///< value reads are supported
    infoSet = 0x02,         ///< value writes are supported
    infoDisabled = 0x04,    ///< an automatic mode holds the control just now
    infoAutoUpdate = 0x08,  ///< the value changes by itself
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
    std::uint16_t length = 0;  ///< bytes of the value in a request, little-endian
    std::uint8_t info = infoGet | infoSet;
    Limits limits = {};
    int PictureState::*picture = nullptr;  ///< what it does to the picture; null: nothing
    /// What XU_RESTORE sets, where that is not what GET_DEF answers.
    std::optional<std::int32_t> vendorDefault = std::nullopt;
    std::optional<Automatic> automatic = std::nullopt;
    /// The second integer of a control of two (tilt beside pan); each takes half of `length`.
    std::optional<Limits> secondLimits = std::nullopt;
    int PictureState::*secondPicture = nullptr;
};

/// Every control of a camera that lacks nothing.
const std::vector<ControlRow>& studioControls();

/// The controls of an older camera: the same without lens and motors (zoom, focus, pan, tilt).
const std::vector<ControlRow>& classicControls();

}  // namespace virtualcam
