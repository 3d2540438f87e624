#pragma once

#include <array>
#include <cstdint>

#include "app/ViewController.h"
#include "camera/ControlTable.h"

/// Reads every vendor control from the camera and shows it on the page of `controller`.
void InitXUPage(ViewController& controller);

/// The rows of the vendor page: what its controls differ in.
namespace vendor {

/// A value: a slider and a list that show the same number, which is the camera's own.
struct ValueControl {
    std::int32_t selector;
    IBOutlet<NSSlider> ViewController::*slider;
    IBOutlet<NSPopUpButton> ViewController::*list;
    std::int32_t highest;  ///< the list's first item at start-up
    std::int32_t lowest;   ///< the list's last item at start-up
};

inline constexpr ValueControl compensation{XU_COMP_VALUE, &ViewController::m_SliderCompValue,
                                           &ViewController::m_SpinCompValue, 7, -7};
inline constexpr ValueControl redGain{XU_RGAIN, &ViewController::m_SliderRgain,
                                      &ViewController::m_SpinRgain, 10, -10};
inline constexpr ValueControl blueGain{XU_BGAIN, &ViewController::m_btnBgain,
                                       &ViewController::m_SpinBgain, 10, -10};
inline constexpr ValueControl dynamicRange{XU_DRC, &ViewController::m_SliderDrc,
                                           &ViewController::m_btnDrc, 8, 0};
inline constexpr ValueControl noise2D{XU_NR2D, &ViewController::m_SliderNR2D,
                                      &ViewController::m_btnNR2D, 6, 0};
inline constexpr ValueControl noise3D{XU_NR3D, &ViewController::m_SliderNR3D,
                                      &ViewController::m_btnNR3D, 8, 0};

/// A two-state button that shows one of two images.
struct ToggleControl {
    std::int32_t selector;
    IBOutlet<NSButton> ViewController::*button;
    std::int8_t valueForOn;  ///< 1, or 0 where the camera's switch has the inverted sense
};

inline constexpr ToggleControl compensationSwitch{XU_COMP_SWITCH, &ViewController::m_btnCompSwitch,
                                                  0};
inline constexpr ToggleControl h264Switch{XU_H264_SWITCH, &ViewController::m_btnH264Switch, 1};
inline constexpr ToggleControl audioSwitch{XU_AUDIO_SWITCH, &ViewController::m_btnAudioSwitch, 1};
inline constexpr ToggleControl verticalFlip{XU_FLIP_V, &ViewController::m_btnFlipV, 1};
inline constexpr ToggleControl horizontalFlip{XU_FLIP_H, &ViewController::m_btnFlipH, 1};

/// The button of each picture style; the style's number on the camera is the index.
inline constexpr std::array<IBOutlet<NSButton> ViewController::*, 7> styleButtons{
    &ViewController::m_btnStyleNormal, &ViewController::m_btnStyleClarity,
    &ViewController::m_btnBright,      &ViewController::m_btnStylePC,
    &ViewController::m_btnClarityLed,  &ViewController::m_btnSytleFace,
    &ViewController::m_btnStyleDefault};

/// The range that both gains share; automatic white balance takes the negative half away.
struct GainRange {
    std::int32_t minimum;
    std::int32_t maximum;
    std::int32_t tickMarks;
};

/// Asks the camera which range the gains have now; the signed one when it does not answer.
GainRange readGainRange();

/// Gives one gain's slider the range and rebuilds its list, in which no item is chosen.
void setGainRange(ViewController& controller, const ValueControl& gain, const GainRange& range);

/// Fills `list` with the numbers from `highest` down to `lowest`, in the place of what it held.
void fillList(const NSPopUpButton& list, std::int32_t highest, std::int32_t lowest);

/// Chooses the number in `list`.
void chooseNumber(const NSPopUpButton& list, std::int32_t number);

/// Shows a toggle on or off: its state, then its image.
void showToggle(const NSButton& button, bool on);

}  // namespace vendor
