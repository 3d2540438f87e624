#pragma once

#include <array>
#include <cstdint>

#include "app/ViewController.h"
#include "camera/ControlTable.h"
#include "pages/uvc/StandardSliders.h"

/// The rows of the standard page: what its sliders differ in.
namespace standard {

/// A slider, the text that shows its number, and the control that it works.
struct SliderControl {
    IBOutlet<NSSlider> ViewController::*slider;
    IBOutlet<NSTextField> ViewController::*text;
    UnitKind unit;
    std::int32_t selector;
    std::int32_t size;  ///< bytes of the control's value
    /// Turns the slider's number into the camera's value, of which `size` bytes are sent.
    std::uint64_t (*encode)(const ViewController& controller, std::int32_t number);
    std::int32_t defaultNumber;  ///< the slider's number after a reset
    /// While this button is on, the camera holds the control and a reset leaves it; null for none.
    IBOutlet<NSButton> ViewController::*automaticMode;
};

/// The number as it is.
std::uint64_t level(const ViewController& controller, std::int32_t number);
/// The exposure time of an index, in 100 microseconds; a number that is no index is sent as it is.
std::uint64_t exposureTime(const ViewController& controller, std::int32_t number);
/// Pan in the low half and tilt in the high half, in arc seconds, the other axis from its slider.
std::uint64_t panWithTilt(const ViewController& controller, std::int32_t number);
std::uint64_t tiltWithPan(const ViewController& controller, std::int32_t number);

#define DEFINE_ROW(row, action, slider, text, unit, selector, size, encode, defaultNumber, mode) \
    inline constexpr SliderControl row{&ViewController::slider,                                  \
                                       &ViewController::text,                                    \
                                       unit,                                                     \
                                       selector,                                                 \
                                       size,                                                     \
                                       encode,                                                   \
                                       defaultNumber,                                            \
                                       mode};
ENUMERATE_STANDARD_SLIDERS(DEFINE_ROW)
#undef DEFINE_ROW

/// All of them, in the order of the reset.
#define ADDRESS_OF_ROW(row, ...) &row,
inline constexpr std::array sliders{ENUMERATE_STANDARD_SLIDERS(ADDRESS_OF_ROW)};
#undef ADDRESS_OF_ROW

/// Arc seconds in a degree: the camera's unit and the sliders' unit of pan and tilt.
inline constexpr std::int32_t arcSecondsPerDegree = 3600;

/// The exposure times behind the slider's numbers -13 to -5, in 100 microseconds.
inline constexpr std::array<std::int32_t, 9> EXPOSURE_TIME_TABLE{1, 2, 5, 10, 20, 40, 80, 167, 333};

/// The slider's number for the first exposure time.
inline constexpr std::int32_t firstExposureIndex = -13;

/// Shows `number` in the text of `control`.
void showNumber(const ViewController& controller, const SliderControl& control,
                std::int32_t number);

/// Sends `number` to the open camera as the value of `control`.
void sendNumber(const ViewController& controller, const SliderControl& control,
                std::int32_t number);

}  // namespace standard
