#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// Where a USB device is attached.
struct UsbLocation {
    std::uint32_t id = 0;  ///< the bus in the top byte, then a nibble per port, the first highest
    bool exact = false;    ///< false: `id` has no room for all of it, another place may share it
};

/// Reads the kernel's name of a USB device, such as "1-2.3" for bus 1, port 2, port 3 or "usb1"
/// for the root hub of bus 1. Anything else is at no exact location.
UsbLocation usbLocation(std::string_view sysname);

/// A USB device from the moment it is plugged in until it is unplugged. The kernel gives it a new
/// number each time.
struct Attachment {
    std::string syspath;
    std::string number;

    bool operator==(const Attachment&) const = default;
};

/// What is known of the USB device behind a node.
struct UsbFacts {
    Attachment attachment;
    std::string sysname;  ///< as `usbLocation` reads it
    std::uint16_t vendorID = 0;
    std::uint16_t productID = 0;
    std::string product;  ///< the device's own name for itself; may be empty
    int function = 0;     ///< how many video-control interfaces the device has before this one's
    std::string interfaceName;  ///< the device's name for this one; may be empty
};

/// What is known of a capture node: a video4linux node that delivers video, or a microphone.
struct NodeFacts {
    std::string syspath;  ///< identifies the node for as long as it exists
    std::string sysname;  ///< "video0", "pcmC0D0c"
    std::string devnode;  ///< path of the device file
    bool hasVideo = false;
    int index = 0;           ///< which of its parent's nodes this is
    std::string parent;      ///< the bus and place of the device behind it, as "pci:0000:00:05.0"
    std::string driverName;  ///< the driver's name for the device; may be empty
    std::optional<UsbFacts> usb;

    bool operator==(const NodeFacts& other) const;
};

/// The identifier that stays the same while the device is at its port. A USB camera's is "0x", its
/// location as 8 lower-case hexadecimal digits, something more for a node that is not the first of
/// its device, and the vendor and product ids as 4 digits each.
std::string uniqueIdentifier(const NodeFacts& facts);

/// The product's name as a person knows it, or what the product calls a further video function of
/// its own; nodes of one device have different ones.
std::string displayName(const NodeFacts& facts);

}  // namespace platform
