#pragma once

// The controls of the vendor page, a row each.
// clang-format off

/// Values: X(row, selector, slider, its action, list, its action, highest, lowest, trace)
/// The slider and the list show the same number, which is the camera's own; the list runs from the
/// highest down to the lowest. The trace tells which of the two actions write a line to the log.
#define ENUMERATE_VENDOR_VALUES(X)                                                                                                          \
    X(compensation, XU_COMP_VALUE, m_SliderCompValue, OnSliderCompValue, m_SpinCompValue, OnChooseCompValue, 7,  -7,  Trace::sliderAndList) \
    X(redGain,      XU_RGAIN,      m_SliderRgain,     OnSliderRgain,     m_SpinRgain,     OnChooseRgain,     10, -10, Trace::list)          \
    X(blueGain,     XU_BGAIN,      m_btnBgain,        OnSliderBgain,     m_SpinBgain,     OnSpinBgain,       10, -10, Trace::list)          \
    X(dynamicRange, XU_DRC,        m_SliderDrc,       OnSliderDrc,       m_btnDrc,        OnChooseDrc,       8,  0,   Trace::none)          \
    X(noise2D,      XU_NR2D,       m_SliderNR2D,      OnSliderNR2D,      m_btnNR2D,       OnBtnNR2D,         6,  0,   Trace::none)          \
    X(noise3D,      XU_NR3D,       m_SliderNR3D,      OnSliderNR3D,      m_btnNR3D,       OnBtnNR3D,         8,  0,   Trace::none)

/// Two-image switches: X(row, selector, button, action, value for on, question)
/// The other value of 0 and 1 is the one for off. The user confirms the question first, if any.
#define ENUMERATE_VENDOR_SWITCHES(X)                                                                             \
    X(compensationSwitch, XU_COMP_SWITCH,  m_btnCompSwitch,  OnBtnCompSwitch,  0, nullptr)                       \
    X(h264Switch,         XU_H264_SWITCH,  m_btnH264Switch,  OnBtnH264Switch,  1, "Reboot to Switch H264?")      \
    X(audioSwitch,        XU_AUDIO_SWITCH, m_btnAudioSwitch, OnBtnAudioSwitch, 1, "Reboot to Switch Audio?")     \
    X(verticalFlip,       XU_FLIP_V,       m_btnFlipV,       OnBtnFlipV,       1, nullptr)                       \
    X(horizontalFlip,     XU_FLIP_H,       m_btnFlipH,       OnBtnFlipH,       1, nullptr)

/// Picture styles: X(number on the camera, button, action), in the order of their numbers.
#define ENUMERATE_PICTURE_STYLES(X)                \
    X(0, m_btnStyleNormal,  OnBtnStyleNormal)      \
    X(1, m_btnStyleClarity, OnBtnStyleClarity)     \
    X(2, m_btnBright,       OnBtnStyleBright)      \
    X(3, m_btnStylePC,      OnBtnStylePC)          \
    X(4, m_btnClarityLed,   OnBtnStyleClarityLed)  \
    X(5, m_btnSytleFace,    OnBtnSytleFace)        \
    X(6, m_btnStyleDefault, OnBtnStyleDefault)
// clang-format on
