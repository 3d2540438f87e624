#pragma once

#include <cstdint>

#include "platform/IOReturn.h"

/// Returns a status as the log shows it in hexadecimal.
inline std::uint32_t statusBits(IOReturn status) {
    return static_cast<std::uint32_t>(status);
}
