#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// Returns the little-endian integer of at most 8 bytes, widened with zeros.
inline std::uint64_t littleEndian(std::span<const std::uint8_t> bytes) {
    std::uint64_t value = 0;
    for (std::size_t i = bytes.size(); i > 0; --i)
        value = (value << 8U) | bytes[i - 1];
    return value;
}

/// Returns the little-endian integer of 1 to 8 bytes, widened with its sign.
inline std::int64_t signedLittleEndian(std::span<const std::uint8_t> bytes) {
    const auto unused = static_cast<unsigned>(64 - 8 * bytes.size());
    return static_cast<std::int64_t>(littleEndian(bytes) << unused) >> unused;
}

/// Fills `bytes` with the low bytes of `value`, the lowest first.
inline void putLittleEndian(std::uint64_t value, std::span<std::uint8_t> bytes) {
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(value);
        value >>= 8U;
    }
}
