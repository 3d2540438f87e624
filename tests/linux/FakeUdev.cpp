// What is not given back is a leak, what is given back twice is freed twice, and the sanitizer sees
// both.

#include "tests/linux/FakeUdev.h"

#include <sys/mman.h>

namespace {

/// A field of a device is read like a property.
const char* field(udev_device* device, const char* name) {
    return udev_device_get_property_value(device, name);
}

udev_list_entry* unlessEnd(udev_list_entry* entry) {
    return entry->path.empty() ? nullptr : entry;
}

}  // namespace

extern "C" {

// clang-format off
udev* udev_new() { return udevStatus(__func__) < 0 ? nullptr : new udev; }
udev* udev_unref(udev* object) { return delete object, nullptr; }
const char* udev_device_get_syspath(udev_device* device) { return field(device, "syspath"); }
const char* udev_device_get_sysname(udev_device* device) { return field(device, "sysname"); }
const char* udev_device_get_sysnum(udev_device* device) { return field(device, "sysnum"); }
const char* udev_device_get_subsystem(udev_device* device) { return field(device, "subsystem"); }
const char* udev_device_get_devtype(udev_device* device) { return field(device, "devtype"); }
const char* udev_device_get_devnode(udev_device* device) { return field(device, "devnode"); }
const char* udev_device_get_action(udev_device* device) { return field(device, "action"); }
const char* udev_device_get_sysattr_value(udev_device* device, const char* name) {
    return field(device, name);
}
udev_device* udev_device_get_parent(udev_device* device) {
    return udev_device_get_parent_with_subsystem_devtype(device, nullptr, nullptr);
}
// The device files are all /dev/null, but for a number that another device has by now.
dev_t udev_device_get_devnum(udev_device*) { return makedev(1, udevStatus(__func__) < 0 ? 4 : 3); }
udev_device* udev_device_unref(udev_device* device) { return delete device, nullptr; }
udev_enumerate* udev_enumerate_unref(udev_enumerate* search) { return delete search, nullptr; }
udev_list_entry* udev_list_entry_get_next(udev_list_entry* entry) { return unlessEnd(entry + 1); }
const char* udev_list_entry_get_name(udev_list_entry* entry) { return entry->path.c_str(); }
udev_monitor* udev_monitor_unref(udev_monitor* monitor) { return delete monitor, nullptr; }
int udev_monitor_enable_receiving(udev_monitor*) { return udevStatus(__func__); }
udev_monitor* udev_monitor_new_from_netlink(udev*, const char*) {
    return udevStatus(__func__) < 0 ? nullptr : new udev_monitor;
}
int udev_monitor_filter_add_match_subsystem_devtype(udev_monitor*, const char*, const char*) {
    return udevStatus(__func__);
}
// clang-format on

int udev_enumerate_add_match_subsystem(udev_enumerate* search, const char* subsystem) {
    search->subsystem = subsystem;
    return udevStatus(__func__);
}

int udev_enumerate_add_match_parent(udev_enumerate* search, udev_device* parent) {
    search->parent = parent;
    return udevStatus(__func__);
}

udev_list_entry* udev_enumerate_get_list_entry(udev_enumerate* search) {
    search->found.emplace_back();
    return unlessEnd(search->found.data());
}

int udev_monitor_get_fd(udev_monitor* /*monitor*/) {
    static const int alwaysReadable = ::memfd_create("", 0);
    return udevStatus(__func__) < 0 ? -1 : alwaysReadable;
}

}  // extern "C"
