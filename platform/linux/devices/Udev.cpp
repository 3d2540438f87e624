#include "platform/linux/devices/Udev.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <string_view>

#include "platform/UVC.h"

namespace platform {

std::string textOrEmpty(const char* text) {
    return text == nullptr ? std::string() : std::string(text);
}

std::string udevAttribute(udev_device* device, const char* name) {
    return textOrEmpty(udev_device_get_sysattr_value(device, name));
}

std::optional<int> udevNumber(udev_device* device, const char* name, int base) {
    const std::string text = udevAttribute(device, name);
    const std::size_t start = std::min(text.find_first_not_of(' '), text.size());
    int number = 0;
    const auto [end, error] =
        std::from_chars(text.data() + start, text.data() + text.size(), number, base);
    return error == std::errc() ? std::optional(number) : std::nullopt;
}

UdevDevicePtr udevDevice(udev* context, const std::string& syspath) {
    return UdevDevicePtr(udev_device_new_from_syspath(context, syspath.c_str()));
}

Attachment attachmentOf(udev_device* usbDevice) {
    return {textOrEmpty(udev_device_get_syspath(usbDevice)), udevAttribute(usbDevice, "devnum")};
}

UdevDevicePtr udevDevice(udev* context, const Attachment& attachment) {
    auto found = udevDevice(context, attachment.syspath);
    const bool same = found && attachmentOf(found.get()) == attachment;
    return same ? std::move(found) : nullptr;
}

std::vector<UdevDevicePtr> udevDevices(udev* context, const char* subsystem, udev_device* parent) {
    std::vector<UdevDevicePtr> found;
    const UdevEnumeratePtr search(udev_enumerate_new(context));
    if (!search || udev_enumerate_add_match_subsystem(search.get(), subsystem) < 0)
        return found;
    if (parent != nullptr && udev_enumerate_add_match_parent(search.get(), parent) < 0)
        return found;
    if (udev_enumerate_scan_devices(search.get()) < 0)
        return found;
    udev_list_entry* entry = nullptr;
    udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(search.get())) {
        // What has gone since the scan is left out.
        if (auto device = udevDevice(context, textOrEmpty(udev_list_entry_get_name(entry))))
            found.push_back(std::move(device));
    }
    return found;
}

void sortByNumber(std::vector<UdevDevicePtr>& devices) {
    const auto number = [](const UdevDevicePtr& device) {
        const std::string text = textOrEmpty(udev_device_get_sysnum(device.get()));
        return std::strtoul(text.c_str(), nullptr, 10);
    };
    std::ranges::stable_sort(devices, {}, number);
}

bool isUsb(udev_device* device, const char* kind) {
    const char* subsystem = udev_device_get_subsystem(device);
    const char* type = udev_device_get_devtype(device);
    return subsystem != nullptr && type != nullptr && std::string_view(subsystem) == "usb" &&
           std::string_view(type) == kind;
}

std::vector<UdevDevicePtr> usbInterfaces(udev* context, udev_device* device) {
    const std::string ownPath = textOrEmpty(udev_device_get_syspath(device));
    auto found = udevDevices(context, "usb", device);
    std::erase_if(found, [&](const UdevDevicePtr& candidate) {
        // A hub's children have interfaces of their own.
        udev_device* parent = udev_device_get_parent(candidate.get());
        return !isUsb(candidate.get(), "usb_interface") || parent == nullptr ||
               textOrEmpty(udev_device_get_syspath(parent)) != ownPath;
    });
    std::ranges::stable_sort(found, {}, [](const UdevDevicePtr& interface) {
        return udevNumber(interface.get(), "bInterfaceNumber", 16).value_or(0);
    });
    return found;
}

bool isVideoControl(udev_device* interface) {
    return udevNumber(interface, "bInterfaceClass", 16) == CC_VIDEO &&
           udevNumber(interface, "bInterfaceSubClass", 16) == SC_VIDEOCONTROL;
}

std::uint16_t usbID(udev_device* device, const char* name) {
    return static_cast<std::uint16_t>(udevNumber(device, name, 16).value_or(0));
}

}  // namespace platform
