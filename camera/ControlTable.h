#pragma once

#include <cstdint>

#include "platform/UVC.h"
#include "platform/VendorUnit.h"

/// One control of the camera. The unit ids are fixed; the camera's descriptors are not read.
struct UVCControlInfo {
    std::int32_t unit;      ///< UVC entity id: 1 camera terminal, 3 processing unit, 16 vendor unit
    std::int32_t selector;  ///< UVC control selector within that unit
    std::int32_t size;      ///< bytes: 1, 2, 4 or 8
};

/// The least and the greatest value of a control, in the control's own units.
struct UVCControlRange {
    std::int32_t min;
    std::int32_t max;
};

/// The kinds of unit by which the pages address a control.
enum UnitKind : std::int32_t {
    UNIT_XU = 0,  ///< the vendor extension unit, unit id 16
    UNIT_PU = 1,  ///< the processing unit, unit id 3
    UNIT_CT = 2,  ///< the camera terminal, unit id 1
};

/// Returns the row of a selector of a unit kind, or null when there is none.
const UVCControlInfo* findControl(std::int32_t unitKind, std::int32_t selector);

/// Returns whether any control has so many bytes.
bool isControlSize(std::int32_t size);
