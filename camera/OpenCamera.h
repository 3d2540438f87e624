#pragma once

#include <cstdint>
#include <string_view>

/// Returns the value of hexadecimal digits, of which more than eight keep the last eight. Digits
/// are not validated: any byte that is none counts as its code minus that of '0'.
std::int32_t HexToInt(const char* text);

/// Opens the camera whose vendor id and product id are the last eight characters of `uniqueID`,
/// four hexadecimal digits each, and makes it `g_uvcCamera`, in the place of the one before, also
/// when the open fails. Returns 0 opened, 1 no device or no plug-in or an identifier that is too
/// short, 2 no device interface.
std::int64_t OpenCameraByUniqueID(std::string_view uniqueID);
