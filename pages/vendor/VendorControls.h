#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "app/ViewController.h"
#include "platform/VendorUnit.h"

/// The rows of the vendor page: what its controls differ in.
namespace vendor {

/// Which of a value's two actions write a line to the log.
enum class Trace { none, list, sliderAndList };

/// A value: a slider and a list that show the same number, which is the camera's own.
struct ValueControl {
    std::int32_t selector;
    IBOutlet<NSSlider> ViewController::*slider;
    IBOutlet<NSPopUpButton> ViewController::*list;
    std::int32_t highest;  ///< the list's first item at start-up
    std::int32_t lowest;   ///< the list's last item at start-up
    Trace trace = Trace::none;
    /// A gain's number for `ChangeCtrlRange`: its range follows automatic white balance. Without
    /// one the range is fixed.
    std::optional<std::int32_t> gain = std::nullopt;
};

inline constexpr ValueControl noise2D{.selector = XU_NR2D,
                                      .slider = &ViewController::m_SliderNR2D,
                                      .list = &ViewController::m_btnNR2D,
                                      .highest = 6,
                                      .lowest = 0};
inline constexpr ValueControl noise3D{.selector = XU_NR3D,
                                      .slider = &ViewController::m_SliderNR3D,
                                      .list = &ViewController::m_btnNR3D,
                                      .highest = 8,
                                      .lowest = 0};
inline constexpr ValueControl dynamicRange{.selector = XU_DRC,
                                           .slider = &ViewController::m_SliderDrc,
                                           .list = &ViewController::m_btnDrc,
                                           .highest = 8,
                                           .lowest = 0};
inline constexpr ValueControl redGain{.selector = XU_RGAIN,
                                      .slider = &ViewController::m_SliderRgain,
                                      .list = &ViewController::m_SpinRgain,
                                      .highest = 10,
                                      .lowest = -10,
                                      .trace = Trace::list,
                                      .gain = 0};
inline constexpr ValueControl blueGain{.selector = XU_BGAIN,
                                       .slider = &ViewController::m_btnBgain,
                                       .list = &ViewController::m_SpinBgain,
                                       .highest = 10,
                                       .lowest = -10,
                                       .trace = Trace::list,
                                       .gain = 1};
inline constexpr ValueControl compensation{.selector = XU_COMP_VALUE,
                                           .slider = &ViewController::m_SliderCompValue,
                                           .list = &ViewController::m_SpinCompValue,
                                           .highest = 7,
                                           .lowest = -7,
                                           .trace = Trace::sliderAndList};

/// All of them, in the order in which a page load asks the camera for them.
inline constexpr std::array values{&noise2D, &noise3D,  &dynamicRange,
                                   &redGain, &blueGain, &compensation};

/// A two-state button that shows one of two images. The other value of 0 and 1 is the one for off.
struct SwitchControl {
    std::int32_t selector;
    IBOutlet<NSButton> ViewController::*button;
    std::uint8_t valueForOn = 1;             ///< 0 where the camera's switch has the inverted sense
    const char* question = nullptr;          ///< what the user confirms first; null for nothing
    const ValueControl* governed = nullptr;  ///< what can be changed only while it is on
};

inline constexpr SwitchControl compensationSwitch{.selector = XU_COMP_SWITCH,
                                                  .button = &ViewController::m_btnCompSwitch,
                                                  .valueForOn = 0,
                                                  .governed = &compensation};
inline constexpr SwitchControl h264Switch{.selector = XU_H264_SWITCH,
                                          .button = &ViewController::m_btnH264Switch,
                                          .question = "Reboot to Switch H264?"};
inline constexpr SwitchControl audioSwitch{.selector = XU_AUDIO_SWITCH,
                                           .button = &ViewController::m_btnAudioSwitch,
                                           .question = "Reboot to Switch Audio?"};
inline constexpr SwitchControl horizontalFlip{.selector = XU_FLIP_H,
                                              .button = &ViewController::m_btnFlipH};
inline constexpr SwitchControl verticalFlip{.selector = XU_FLIP_V,
                                            .button = &ViewController::m_btnFlipV};

/// All of them, in the order in which a page load asks the camera for them.
inline constexpr std::array switches{&compensationSwitch, &h264Switch, &audioSwitch,
                                     &horizontalFlip, &verticalFlip};

/// A picture style: its number on the camera, and its button.
struct PictureStyle {
    std::int32_t number;
    IBOutlet<NSButton> ViewController::*button;
};

inline constexpr PictureStyle normalStyle{.number = 0, .button = &ViewController::m_btnStyleNormal};
inline constexpr PictureStyle clarityStyle{.number = 1,
                                           .button = &ViewController::m_btnStyleClarity};
inline constexpr PictureStyle brightStyle{.number = 2, .button = &ViewController::m_btnBright};
inline constexpr PictureStyle pcStyle{.number = 3, .button = &ViewController::m_btnStylePC};
inline constexpr PictureStyle clarityLedStyle{.number = 4,
                                              .button = &ViewController::m_btnClarityLed};
inline constexpr PictureStyle faceStyle{.number = 5, .button = &ViewController::m_btnSytleFace};
inline constexpr PictureStyle defaultStyle{.number = 6,
                                           .button = &ViewController::m_btnStyleDefault};

/// All of them; at most one is on.
inline constexpr std::array styles{&normalStyle,     &clarityStyle, &brightStyle, &pcStyle,
                                   &clarityLedStyle, &faceStyle,    &defaultStyle};

}  // namespace vendor
