// A udev in which each property, attribute and relation is there or missing, and says anything.

#include <cerrno>

#include "fuzz/Input.h"
#include "tests/linux/FakeUdev.h"

int udevStatus(const char* /*function*/) {
    return input.seldom() ? -EINVAL : 0;
}

extern "C" {

/// At any path.
udev_device* udev_device_new_from_syspath(udev* /*context*/, const char* /*path*/) {
    return input.byte() % 4 == 3 ? nullptr : new udev_device;
}

/// A device says the same each time it is asked: libudev keeps what it has read.
const char* udev_device_get_property_value(udev_device* device, const char* name) {
    static const std::string usual[] = {
        "video4linux", "sound",    "usb",   "usb_device", "usb_interface", "0e", "01",
        ":capture:",   "pcmC0D1c", "1-2.3", "remove",     "0abc",          "3"};
    // The product opens this path, so it is always one that may be opened.
    if (std::string_view(name) == "devnode")
        return input.seldom() ? nullptr : "/dev/null";
    const auto [entry, isNew] = device->said.try_emplace(name);
    if (isNew && !input.seldom())
        entry->second = input.byte() % 4 == 3 ? input.text() : input.oneOf(usual);
    return entry->second.empty() ? nullptr : entry->second.c_str();
}

/// The chain of parents ends with the input.
udev_device* udev_device_get_parent_with_subsystem_devtype(udev_device* device,
                                                           const char* /*subsystem*/,
                                                           const char* /*type*/) {
    if (!device->parent && !input.atEnd())
        device->parent.reset(udev_device_new_from_syspath(nullptr, ""));
    return device->parent.get();
}

udev_enumerate* udev_enumerate_new(udev* /*context*/) {
    if (udevStatus(__func__) < 0)
        return nullptr;
    return new udev_enumerate{"", nullptr,
                              std::vector<udev_list_entry>(input.byte() % 4, {"/sys/any"})};
}

int udev_enumerate_scan_devices(udev_enumerate* /*search*/) {
    return udevStatus(__func__);
}

udev_device* udev_monitor_receive_device(udev_monitor* /*monitor*/) {
    static constexpr int failures[] = {EAGAIN, EINTR, ENOBUFS};
    errno = input.oneOf(failures);
    return input.atEnd() ? nullptr : udev_device_new_from_syspath(nullptr, "");
}

}  // extern "C"
