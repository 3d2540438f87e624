#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/IOReturn.h"
#include "platform/IOUSBTypes.h"

namespace platform {

/// What can be opened through a plug-in: a USB device or one of its interfaces. A back end stays
/// silent: it returns statuses, and its caller logs them with context.
class UsbNode {
  public:
    virtual ~UsbNode() = default;

    /// Whether a plug-in can be made for this node: 0, or why not.
    virtual IOReturn createPlugIn() = 0;

    /// Whether that plug-in gives out the node's own interface: 0, or why not.
    virtual IOReturn queryInterface() = 0;
};

/// One interface of a USB device, in its first alternate setting.
class UsbInterface : public UsbNode {
  public:
    /// The interface descriptor's fields that tell what it is (USB 2.0, 9.6.5).
    struct Descriptor {
        std::uint8_t interfaceClass = 0;
        std::uint8_t interfaceSubClass = 0;
        std::uint8_t interfaceProtocol = 0;
        std::uint8_t alternateSetting = 0;
    };

    virtual Descriptor descriptor() const = 0;

    /// Opens the interface for requests: 0, or an errno value.
    virtual IOReturn open() = 0;

    /// Sends one request on the default control pipe and waits for its end, at most as long as the
    /// kernel's UVC driver waits (5 s). For a read, fills at most `wLength` bytes.
    /// Sets `wLenDone`. Returns 0, or an errno value. ENODEV: the device is gone. ETIMEDOUT: it
    /// does not answer, or has lately not answered and was not asked.
    virtual IOReturn controlRequest(IOUSBDevRequest& request) = 0;

    /// Closes the interface; harmless when it is not open.
    virtual IOReturn close() = 0;
};

/// One attached USB device.
class UsbDevice : public UsbNode {
  public:
    virtual std::uint16_t vendorID() const = 0;
    virtual std::uint16_t productID() const = 0;

    /// Where the device is attached: the bus number in the top byte, then a nibble for each port on
    /// the way down, the first port in the highest nibble.
    virtual std::uint32_t locationID() const = 0;

    /// Appends the device's interfaces, in descriptor order: 0, or an errno value.
    virtual IOReturn interfaces(std::vector<std::shared_ptr<UsbInterface>>& found) = 0;
};

/// The USB bus, as far as this program needs it.
class UsbBackend {
  public:
    virtual ~UsbBackend() = default;

    /// Returns the devices now attached, in the system's order.
    virtual std::vector<std::shared_ptr<UsbDevice>> devices() = 0;
};

}  // namespace platform
