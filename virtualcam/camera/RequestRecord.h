#pragma once

#include <cstdint>
#include <iosfwd>
#include <vector>

#include "platform/IOReturn.h"
#include "platform/IOUSBTypes.h"

namespace virtualcam {

/// One request that reached a camera, and what became of it.
struct RequestRecord {
    std::uint8_t bmRequestType = 0;
    std::uint8_t bRequest = 0;
    std::uint16_t wValue = 0;
    std::uint16_t wIndex = 0;
    std::uint16_t wLength = 0;
    std::vector<std::uint8_t> data;  ///< the bytes that were written, or answered
    IOReturn result = 0;             ///< 0, or the errno value

    bool operator==(const RequestRecord&) const = default;
};

/// Returns the record of `request` once it has ended with `result`.
RequestRecord recordOf(const IOUSBDevRequest& request, IOReturn result);

/// Writes the record in words and in the fields of the setup packet.
std::ostream& operator<<(std::ostream& out, const RequestRecord& record);

}  // namespace virtualcam
