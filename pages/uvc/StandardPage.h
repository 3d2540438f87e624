#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "app/ViewController.h"
#include "camera/ControlTable.h"

/// The rows of the standard page: what its sliders differ in.
namespace standard {

/// A slider, the text that shows its number, and the control that it works.
struct SliderControl {
    IBOutlet<NSSlider> ViewController::*slider;
    IBOutlet<NSTextField> ViewController::*text;
    UnitKind unit;
    std::int32_t selector;
    std::int32_t size;  ///< bytes of the control's value
};

inline constexpr SliderControl brightness{&ViewController::m_sliderBright,
                                          &ViewController::m_textBright, UNIT_PU,
                                          PU_BRIGHTNESS_CONTROL, 2};
inline constexpr SliderControl contrast{&ViewController::m_sliderContrast,
                                        &ViewController::m_textContrast, UNIT_PU,
                                        PU_CONTRAST_CONTROL, 2};
inline constexpr SliderControl hue{&ViewController::m_sliderHue, &ViewController::m_textHue,
                                   UNIT_PU, PU_HUE_CONTROL, 2};
inline constexpr SliderControl saturation{&ViewController::m_sliderSaturation,
                                          &ViewController::m_textSaturation, UNIT_PU,
                                          PU_SATURATION_CONTROL, 2};
inline constexpr SliderControl sharpness{&ViewController::m_sliderSharpness,
                                         &ViewController::m_textSharpness, UNIT_PU,
                                         PU_SHARPNESS_CONTROL, 2};
inline constexpr SliderControl gamma{&ViewController::m_sliderGama, &ViewController::m_textGama,
                                     UNIT_PU, PU_GAMMA_CONTROL, 2};
inline constexpr SliderControl whiteBalance{&ViewController::m_sliderWB, &ViewController::m_textWb,
                                            UNIT_PU, PU_WHITE_BALANCE_TEMPERATURE_CONTROL, 2};
inline constexpr SliderControl backlight{&ViewController::m_sliderBackLight,
                                         &ViewController::m_textBackLight, UNIT_PU,
                                         PU_BACKLIGHT_COMPENSATION_CONTROL, 2};
inline constexpr SliderControl gain{&ViewController::m_sliderGain, &ViewController::m_textGain,
                                    UNIT_PU, PU_GAIN_CONTROL, 2};
inline constexpr SliderControl zoom{&ViewController::m_sliderZoom, &ViewController::m_textZoom,
                                    UNIT_CT, CT_ZOOM_ABSOLUTE_CONTROL, 2};
inline constexpr SliderControl focus{&ViewController::m_sliderFocus, &ViewController::m_textFocus,
                                     UNIT_CT, CT_FOCUS_ABSOLUTE_CONTROL, 2};
/// The slider's number is an index into the exposure times.
inline constexpr SliderControl exposure{&ViewController::m_sliderAutoExposure,
                                        &ViewController::m_textExposure, UNIT_CT,
                                        CT_EXPOSURE_TIME_ABSOLUTE_CONTROL, 4};
/// Pan and tilt are the two halves of one control, in whole degrees on the sliders.
inline constexpr SliderControl pan{&ViewController::m_sliderPano, &ViewController::m_textPano,
                                   UNIT_CT, CT_PANTILT_ABSOLUTE_CONTROL, 8};
inline constexpr SliderControl tilt{&ViewController::m_sliderTile, &ViewController::m_textTile,
                                    UNIT_CT, CT_PANTILT_ABSOLUTE_CONTROL, 8};

/// Arc seconds in a degree: the camera's unit and the sliders' unit of pan and tilt.
inline constexpr std::int32_t arcSecondsPerDegree = 3600;

/// Exposure modes (UVC 1.1, 4.2.2.1.2) that the page uses.
inline constexpr std::uint8_t exposureManual = 1;
inline constexpr std::uint8_t exposureAutomatic = 8;  ///< aperture priority

/// Power-line frequencies (UVC 1.1, 4.2.2.3.6).
inline constexpr std::uint8_t powerLine50Hz = 1;
inline constexpr std::uint8_t powerLine60Hz = 2;

/// The exposure times behind the slider's numbers -13 to -5, in 100 microseconds.
inline constexpr std::array<std::int32_t, 9> EXPOSURE_TIME_TABLE{1, 2, 5, 10, 20, 40, 80, 167, 333};

/// The slider's number for the first exposure time.
inline constexpr std::int32_t firstExposureIndex = -13;

/// Shows `number` in the text of `control`.
void showNumber(ViewController& controller, const SliderControl& control, std::int32_t number);

}  // namespace standard
