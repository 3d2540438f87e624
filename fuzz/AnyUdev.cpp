// A udev in which each property, attribute and relation is there or missing, and says anything.

#include <sys/sysmacros.h>

#include <cerrno>

#include "fuzz/Input.h"
#include "tests/linux/FakeUdev.h"

namespace {

udev_device* anyDevice() {
    return input.byte() % 4 == 3 ? nullptr : new udev_device;
}

}  // namespace

int udevStatus(const char* /*function*/) {
    return input.seldom() ? -EINVAL : 0;
}

extern "C" {

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

dev_t udev_device_get_devnum(udev_device* /*device*/) {
    return input.seldom() ? 0 : makedev(1, 3);  // which is /dev/null's
}

/// The chain of parents ends with the input.
udev_device* udev_device_get_parent_with_subsystem_devtype(udev_device* device,
                                                           const char* /*subsystem*/,
                                                           const char* /*type*/) {
    if (!device->parent && !input.atEnd())
        device->parent.reset(anyDevice());
    return device->parent.get();
}

udev_device* udev_device_new_from_syspath(udev* /*context*/, const char* /*path*/) {
    return anyDevice();
}

udev_enumerate* udev_enumerate_new(udev* /*context*/) {
    if (udevStatus(__func__) < 0)
        return nullptr;
    return new udev_enumerate{std::vector<udev_list_entry>(input.byte() % 4, {"/sys/any"})};
}

int udev_enumerate_add_match_subsystem(udev_enumerate* /*search*/, const char* /*subsystem*/) {
    return udevStatus(__func__);
}

int udev_enumerate_add_match_parent(udev_enumerate* /*search*/, udev_device* /*parent*/) {
    return udevStatus(__func__);
}

int udev_monitor_get_fd(udev_monitor* /*monitor*/) {
    return input.seldom() ? -1 : 0;
}

udev_device* udev_monitor_receive_device(udev_monitor* /*monitor*/) {
    static constexpr int failures[] = {EAGAIN, EINTR, ENOBUFS};
    errno = input.oneOf(failures);
    return input.atEnd() ? nullptr : anyDevice();
}

}  // extern "C"
