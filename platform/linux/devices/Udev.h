#pragma once

#include <libudev.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/devices/NodeFacts.h"

namespace platform {

template <auto unref>
struct UdevUnref {
    void operator()(auto* object) const { unref(object); }
};

using UdevPtr = std::unique_ptr<udev, UdevUnref<udev_unref>>;
using UdevDevicePtr = std::unique_ptr<udev_device, UdevUnref<udev_device_unref>>;
using UdevEnumeratePtr = std::unique_ptr<udev_enumerate, UdevUnref<udev_enumerate_unref>>;
using UdevMonitorPtr = std::unique_ptr<udev_monitor, UdevUnref<udev_monitor_unref>>;

/// Returns what libudev left out as empty.
std::string textOrEmpty(const char* text);

/// Reads an attribute file of `device`; empty when there is none.
std::string udevAttribute(udev_device* device, const char* name);

/// Reads an attribute of `device` that is a number in `base`, or returns nothing.
std::optional<int> udevNumber(udev_device* device, const char* name, int base);

/// Returns the device at `syspath`, or null when it is gone.
UdevDevicePtr udevDevice(udev* context, const std::string& syspath);

/// How the USB device is attached now.
Attachment attachmentOf(udev_device* usbDevice);

/// Returns the USB device, or null when it has been unplugged since.
UdevDevicePtr udevDevice(udev* context, const Attachment& attachment);

/// Returns the devices of a subsystem, those below `parent` unless it is null, in udev's order.
std::vector<UdevDevicePtr> udevDevices(udev* context, const char* subsystem, udev_device* parent);

/// Puts devices in the order of the numbers that end their names.
void sortByNumber(std::vector<UdevDevicePtr>& devices);

/// Whether `device` is of a USB kind: "usb_device" or "usb_interface".
bool isUsb(udev_device* device, const char* kind);

/// Returns the interfaces of a USB device, in the order of their numbers.
std::vector<UdevDevicePtr> usbInterfaces(udev* context, udev_device* device);

/// Whether `interface` is a video control interface (UVC 1.1, A.1 and A.2).
bool isVideoControl(udev_device* interface);

/// A USB device id as sysfs gives it; 0 when it is missing.
std::uint16_t usbID(udev_device* device, const char* name);

}  // namespace platform
