#pragma once

#include <cstdint>
#include <span>
#include <string_view>

/// Returns the value of hexadecimal digits, of which more than eight keep the last eight. Digits
/// are not validated: any byte that is none counts as its code minus that of '0'.
std::int32_t HexToInt(const char* text);

/// Opens the camera whose vendor id and product id are the last eight characters of `uniqueID`,
/// four hexadecimal digits each, and makes it `g_uvcCamera`, in the place of the one before, also
/// when the open fails. Returns 0 opened, 1 no device or no plug-in or an identifier that is too
/// short, 2 no device interface.
std::int64_t OpenCameraByUniqueID(std::string_view uniqueID);

/// The directions of `Capture_Transfer`; any other is answered with 0.
inline constexpr std::int32_t captureRead = 0;
inline constexpr std::int32_t captureWrite = 1;

/// Reads a control of the open camera into `buffer`, which has room for `length` bytes, or writes
/// the `length` bytes there. Returns 0 done, 1 failed or no camera open.
std::int64_t Capture_Transfer(std::uint32_t selector, std::int32_t direction, void* buffer,
                              std::uint32_t length, std::uint32_t unitKind);

/// Writes `value`, little-endian and as long as the control, to the open camera; without one does
/// nothing. A camera that refuses is logged and otherwise not looked at.
void sendValue(std::int32_t unitKind, std::int32_t selector, std::span<const std::uint8_t> value);

/// The same for a value of one byte, the low 8 bits of `value`.
void sendByte(std::int32_t unitKind, std::int32_t selector, std::int32_t value);
