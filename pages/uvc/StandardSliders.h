#pragma once

#include <array>
#include <cstdint>

#include "app/ViewController.h"
#include "camera/ControlTable.h"

/// The rows of the standard page: what its sliders differ in. Their numbers are in the camera's own
/// units but for white balance, in kelvin, exposure, an index into the exposure times, and pan and
/// tilt, in degrees.
namespace standard {

/// How a slider's number becomes the camera's value, of which as many bytes are sent as the control
/// has.
using Encoding = std::uint64_t (*)(const ViewController& controller, std::int32_t number);

/// The number as it is.
std::uint64_t level(const ViewController& controller, std::int32_t number);
/// The exposure time of an index, in 100 microseconds; a number that is no index is sent as it is.
std::uint64_t exposureTime(const ViewController& controller, std::int32_t number);
/// Pan in the low half and tilt in the high half, in arc seconds, the other axis from its slider.
std::uint64_t panWithTilt(const ViewController& controller, std::int32_t number);
std::uint64_t tiltWithPan(const ViewController& controller, std::int32_t number);

/// A slider, the text that shows its number, and the control that it works.
struct SliderControl {
    IBOutlet<NSSlider> ViewController::*slider;
    IBOutlet<NSTextField> ViewController::*text;
    UnitKind unit;
    std::int32_t selector;
    Encoding encode = level;
    std::int32_t defaultNumber;  ///< the slider's number after a reset
    /// While this button is on, the camera holds the control and a reset leaves it; null for none.
    IBOutlet<NSButton> ViewController::*automaticMode = nullptr;
    bool readBack = false;  ///< whether the camera is asked for the value after each change
};

inline constexpr SliderControl brightness{.slider = &ViewController::m_sliderBright,
                                          .text = &ViewController::m_textBright,
                                          .unit = UNIT_PU,
                                          .selector = PU_BRIGHTNESS_CONTROL,
                                          .defaultNumber = 7};
inline constexpr SliderControl contrast{.slider = &ViewController::m_sliderContrast,
                                        .text = &ViewController::m_textContrast,
                                        .unit = UNIT_PU,
                                        .selector = PU_CONTRAST_CONTROL,
                                        .defaultNumber = 7};
inline constexpr SliderControl hue{.slider = &ViewController::m_sliderHue,
                                   .text = &ViewController::m_textHue,
                                   .unit = UNIT_PU,
                                   .selector = PU_HUE_CONTROL,
                                   .defaultNumber = 7};
inline constexpr SliderControl saturation{.slider = &ViewController::m_sliderSaturation,
                                          .text = &ViewController::m_textSaturation,
                                          .unit = UNIT_PU,
                                          .selector = PU_SATURATION_CONTROL,
                                          .defaultNumber = 100};
inline constexpr SliderControl sharpness{.slider = &ViewController::m_sliderSharpness,
                                         .text = &ViewController::m_textSharpness,
                                         .unit = UNIT_PU,
                                         .selector = PU_SHARPNESS_CONTROL,
                                         .defaultNumber = 9};
inline constexpr SliderControl gamma{.slider = &ViewController::m_sliderGama,
                                     .text = &ViewController::m_textGama,
                                     .unit = UNIT_PU,
                                     .selector = PU_GAMMA_CONTROL,
                                     .defaultNumber = 238};
inline constexpr SliderControl whiteBalance{.slider = &ViewController::m_sliderWB,
                                            .text = &ViewController::m_textWb,
                                            .unit = UNIT_PU,
                                            .selector = PU_WHITE_BALANCE_TEMPERATURE_CONTROL,
                                            .defaultNumber = 6500,
                                            .automaticMode = &ViewController::m_btnAutoWB};
inline constexpr SliderControl backlight{.slider = &ViewController::m_sliderBackLight,
                                         .text = &ViewController::m_textBackLight,
                                         .unit = UNIT_PU,
                                         .selector = PU_BACKLIGHT_COMPENSATION_CONTROL,
                                         .defaultNumber = 0};
inline constexpr SliderControl gain{.slider = &ViewController::m_sliderGain,
                                    .text = &ViewController::m_textGain,
                                    .unit = UNIT_PU,
                                    .selector = PU_GAIN_CONTROL,
                                    .defaultNumber = 6,
                                    .readBack = true};
inline constexpr SliderControl zoom{.slider = &ViewController::m_sliderZoom,
                                    .text = &ViewController::m_textZoom,
                                    .unit = UNIT_CT,
                                    .selector = CT_ZOOM_ABSOLUTE_CONTROL,
                                    .defaultNumber = 0};
inline constexpr SliderControl focus{.slider = &ViewController::m_sliderFocus,
                                     .text = &ViewController::m_textFocus,
                                     .unit = UNIT_CT,
                                     .selector = CT_FOCUS_ABSOLUTE_CONTROL,
                                     .defaultNumber = 0,
                                     .automaticMode = &ViewController::m_btnAutoFocus};
inline constexpr SliderControl exposure{.slider = &ViewController::m_sliderAutoExposure,
                                        .text = &ViewController::m_textExposure,
                                        .unit = UNIT_CT,
                                        .selector = CT_EXPOSURE_TIME_ABSOLUTE_CONTROL,
                                        .encode = exposureTime,
                                        .defaultNumber = -6,
                                        .automaticMode = &ViewController::m_btnAutoExposure};
inline constexpr SliderControl pan{.slider = &ViewController::m_sliderPano,
                                   .text = &ViewController::m_textPano,
                                   .unit = UNIT_CT,
                                   .selector = CT_PANTILT_ABSOLUTE_CONTROL,
                                   .encode = panWithTilt,
                                   .defaultNumber = 0};
inline constexpr SliderControl tilt{.slider = &ViewController::m_sliderTile,
                                    .text = &ViewController::m_textTile,
                                    .unit = UNIT_CT,
                                    .selector = CT_PANTILT_ABSOLUTE_CONTROL,
                                    .encode = tiltWithPan,
                                    .defaultNumber = 0};

/// All of them, in the order in which a reset sends them.
inline constexpr std::array sliders{&brightness, &contrast,     &hue,       &saturation, &sharpness,
                                    &gamma,      &whiteBalance, &backlight, &gain,       &zoom,
                                    &focus,      &exposure,     &pan,       &tilt};

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
