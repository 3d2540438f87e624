#pragma once

#include <cstdint>
#include <span>

/// The directions of `Capture_Transfer`; any other is answered with 0.
inline constexpr std::int32_t captureRead = 0;
inline constexpr std::int32_t captureWrite = 1;

/// Reads a control of the open camera into `buffer`, which has room for `length` bytes and never
/// takes more, or writes the `length` bytes there. Returns 0 done, 1 failed or no camera open; 0
/// also for a pair of unit kind and selector that no control has.
std::int64_t Capture_Transfer(std::uint32_t selector, std::int32_t direction, void* buffer,
                              std::uint32_t length, std::uint32_t unitKind);

/// Writes `value`, little-endian and as long as the control, to the open camera; without one does
/// nothing. A camera that refuses is logged and otherwise not looked at.
void sendValue(std::int32_t unitKind, std::int32_t selector, std::span<const std::uint8_t> value);

/// The same for a value of one byte, the low 8 bits of `value`.
void sendByte(std::int32_t unitKind, std::int32_t selector, std::int32_t value);
