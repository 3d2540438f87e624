#pragma once

/// Every slider of the standard page, a row each, in the order of the reset:
/// X(row, action, slider, text, unit kind, selector, bytes, encoding, default, automatic mode)
///
/// The encoding turns the slider's number into the camera's value. The default is a slider's
/// number; it is skipped while the button of the automatic mode is on. Numbers are in the camera's
/// own units, white balance in kelvin, exposure an index into the exposure times, pan and tilt in
/// degrees.
// clang-format off
#define ENUMERATE_STANDARD_SLIDERS(X)                                                                                              \
    X(brightness,   OnSliderBright,       m_sliderBright,       m_textBright,     UNIT_PU, PU_BRIGHTNESS_CONTROL,                2, level,        7,    nullptr)                            \
    X(contrast,     OnSliderContrast,     m_sliderContrast,     m_textContrast,   UNIT_PU, PU_CONTRAST_CONTROL,                  2, level,        7,    nullptr)                            \
    X(hue,          OnSliderHue,          m_sliderHue,          m_textHue,        UNIT_PU, PU_HUE_CONTROL,                       2, level,        7,    nullptr)                            \
    X(saturation,   OnSliderSaturation,   m_sliderSaturation,   m_textSaturation, UNIT_PU, PU_SATURATION_CONTROL,                2, level,        100,  nullptr)                            \
    X(sharpness,    OnSliderSharpness,    m_sliderSharpness,    m_textSharpness,  UNIT_PU, PU_SHARPNESS_CONTROL,                 2, level,        9,    nullptr)                            \
    X(gamma,        OnSliderGama,         m_sliderGama,         m_textGama,       UNIT_PU, PU_GAMMA_CONTROL,                     2, level,        238,  nullptr)                            \
    X(whiteBalance, OnSliderWB,           m_sliderWB,           m_textWb,         UNIT_PU, PU_WHITE_BALANCE_TEMPERATURE_CONTROL, 2, level,        6500, &ViewController::m_btnAutoWB)       \
    X(backlight,    OnSliderBackLight,    m_sliderBackLight,    m_textBackLight,  UNIT_PU, PU_BACKLIGHT_COMPENSATION_CONTROL,    2, level,        0,    nullptr)                            \
    X(gain,         OnSliderGain,         m_sliderGain,         m_textGain,       UNIT_PU, PU_GAIN_CONTROL,                      2, level,        6,    nullptr)                            \
    X(zoom,         OnSliderZoom,         m_sliderZoom,         m_textZoom,       UNIT_CT, CT_ZOOM_ABSOLUTE_CONTROL,             2, level,        0,    nullptr)                            \
    X(focus,        OnSliderFocus,        m_sliderFocus,        m_textFocus,      UNIT_CT, CT_FOCUS_ABSOLUTE_CONTROL,            2, level,        0,    &ViewController::m_btnAutoFocus)    \
    X(exposure,     OnSliderAutoExposure, m_sliderAutoExposure, m_textExposure,   UNIT_CT, CT_EXPOSURE_TIME_ABSOLUTE_CONTROL,    4, exposureTime, -6,   &ViewController::m_btnAutoExposure) \
    X(pan,          OnSliderPano,         m_sliderPano,         m_textPano,       UNIT_CT, CT_PANTILT_ABSOLUTE_CONTROL,          8, panWithTilt,  0,    nullptr)                            \
    X(tilt,         OnSliderTile,         m_sliderTile,         m_textTile,       UNIT_CT, CT_PANTILT_ABSOLUTE_CONTROL,          8, tiltWithPan,  0,    nullptr)
// clang-format on
