#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/IOReturn.h"

namespace platform {

/// A value of a UVC control and the V4L2 value that stands for it.
struct ValuePair {
    std::int64_t uvc = 0;
    std::int32_t v4l2 = 0;
};

/// One control of the camera terminal or the processing unit (UVC 1.1, 4.2.2.1 and 4.2.2.3) and
/// the V4L2 controls that uvcvideo makes of it. On the wire it is a row of little-endian fields of
/// one width, a V4L2 control each.
struct ControlRow {
    std::uint8_t selector = 0;
    std::uint8_t width = 0;               ///< bytes of one field: 1, 2 or 4
    bool isSigned = false;                ///< whether a field has a sign
    std::array<std::uint32_t, 2> ids{};   ///< V4L2 control ids; the second may be 0, for none
    std::span<const ValuePair> values{};  ///< empty: both sides use the same numbers

    std::size_t fields() const { return ids[1] == 0 ? 1 : 2; }
    std::size_t size() const { return fields() * width; }
};

/// Returns the controls of the camera terminal or the processing unit; none for any other unit.
std::span<const ControlRow> controlRows(std::uint8_t unit);

/// Turns the field at `bytes` into the V4L2 value: 0, ERANGE when V4L2 can't carry the value, or
/// EINVAL when none stands for it.
IOReturn fieldToV4l2(const ControlRow& row, std::span<const std::uint8_t> bytes,
                     std::int32_t& value);

/// Turns a V4L2 value into the field at `bytes`: 0, ERANGE when the field can't hold it, or EINVAL
/// when it stands for nothing. Whatever it returns, it may have changed `bytes`.
IOReturn v4l2ToField(const ControlRow& row, std::int64_t value, std::span<std::uint8_t> bytes);

}  // namespace platform
