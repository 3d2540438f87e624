#pragma once

#include <cstdint>

#include "app/ViewController.h"
#include "pages/vendor/VendorControls.h"

/// Reads every vendor control from the camera and shows it on the page of `controller`.
void InitXUPage(ViewController& controller);

namespace vendor {

/// The range that both gains share; automatic white balance takes the negative half away.
struct GainRange {
    std::int32_t minimum;
    std::int32_t maximum;
    std::int32_t tickMarks;
};

/// Asks the camera which range the gains have now; the signed one when it does not answer.
GainRange readGainRange();

/// Gives a gain's slider the range and rebuilds its list, in which the caller chooses the number.
void setGainRange(ViewController& controller, const ValueControl& control, const GainRange& range);

/// Fills `list` with the numbers from `highest` down to `lowest`, in the place of what it held.
void fillList(const NSPopUpButton& list, std::int32_t highest, std::int32_t lowest);

/// Chooses the number in `list`.
void chooseNumber(const NSPopUpButton& list, std::int32_t number);

/// Shows a switch on or off: its state, then its image.
void showSwitch(const ViewController& controller, const SwitchControl& control, bool on);

/// Lets the user change what a switch governs, if it governs anything, only while it is on.
void enableGoverned(const ViewController& controller, const SwitchControl& control, bool on);

}  // namespace vendor
