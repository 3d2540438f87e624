#pragma once

#include <cstdint>

/// A status of the USB layer: `kIOReturnSuccess`, or an errno value that says what failed.
using IOReturn = std::int32_t;

inline constexpr IOReturn kIOReturnSuccess = 0;
