#pragma once

#include <array>
#include <cstdint>

#include "app/ViewController.h"
#include "camera/ControlTable.h"
#include "pages/vendor/VendorControls.h"

/// Reads every vendor control from the camera and shows it on the page of `controller`.
void InitXUPage(ViewController& controller);

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
    Trace trace;
};

/// A two-state button that shows one of two images.
struct SwitchControl {
    std::int32_t selector;
    IBOutlet<NSButton> ViewController::*button;
    std::uint8_t valueForOn;  ///< 1, or 0 where the camera's switch has the inverted sense
    const char* question;     ///< what the user confirms first; null for nothing
};

#define DEFINE_VALUE(row, selector, slider, sliderAction, list, listAction, highest, lowest, \
                     trace)                                                                  \
    inline constexpr ValueControl row{                                                       \
        selector, &ViewController::slider, &ViewController::list, highest, lowest, trace};
ENUMERATE_VENDOR_VALUES(DEFINE_VALUE)
#undef DEFINE_VALUE

#define DEFINE_SWITCH(row, selector, button, action, valueForOn, question) \
    inline constexpr SwitchControl row{selector, &ViewController::button, valueForOn, question};
ENUMERATE_VENDOR_SWITCHES(DEFINE_SWITCH)
#undef DEFINE_SWITCH

/// The button of each picture style; the style's number on the camera is the index.
#define ADDRESS_OF_BUTTON(number, button, action) &ViewController::button,
inline constexpr std::array styleButtons{ENUMERATE_PICTURE_STYLES(ADDRESS_OF_BUTTON)};
#undef ADDRESS_OF_BUTTON

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

/// Shows a switch on or off: its state, then its image.
void showSwitch(const NSButton& button, bool on);

}  // namespace vendor
