// libudev's functions, as far as the product calls them. What is not given back is a leak, what is
// given back twice is freed twice, and the sanitizer sees both.

#include <sys/sysmacros.h>
#include <sys/types.h>

#include <cstdarg>
#include <cstdint>

// Other libraries in the process keep the real ones.
#pragma GCC visibility push(hidden)
#include <libudev.h>
#pragma GCC visibility pop

#include <cerrno>

#include "tests/linux/FakeUdev.h"

struct udev {};
struct udev_monitor {};
struct udev_list_entry {
    std::string path;
    udev_list_entry* next = nullptr;
};
struct udev_enumerate {
    std::vector<std::string> paths = fakeUdev().devices();
    std::vector<udev_list_entry> found{};
};

namespace {

int statusOf(const char* function) {
    return fakeUdev().fails(function) ? -EINVAL : 0;
}

template <class Object>
Object* make(const char* function) {
    return fakeUdev().fails(function) ? nullptr : new Object;
}

template <class Object>
Object* destroy(Object* object) {
    delete object;
    return nullptr;
}

}  // namespace

extern "C" {

// clang-format off
udev* udev_new() { return make<udev>(__func__); }
udev* udev_unref(udev* object) { return destroy(object); }
const char* udev_device_get_syspath(udev_device* device) { return device->text("syspath"); }
const char* udev_device_get_sysname(udev_device* device) { return device->text("sysname"); }
const char* udev_device_get_sysnum(udev_device* device) { return device->text("sysnum"); }
const char* udev_device_get_subsystem(udev_device* device) { return device->text("subsystem"); }
const char* udev_device_get_devtype(udev_device* device) { return device->text("devtype"); }
const char* udev_device_get_devnode(udev_device* device) { return device->text("devnode"); }
const char* udev_device_get_action(udev_device* device) { return device->text("action"); }
dev_t udev_device_get_devnum(udev_device* device) { return device->number(); }
udev_device* udev_device_unref(udev_device* device) { return destroy(device); }
udev_enumerate* udev_enumerate_new(udev*) { return make<udev_enumerate>(__func__); }
udev_enumerate* udev_enumerate_unref(udev_enumerate* search) { return destroy(search); }
udev_list_entry* udev_list_entry_get_next(udev_list_entry* entry) { return entry->next; }
const char* udev_list_entry_get_name(udev_list_entry* entry) { return entry->path.c_str(); }
udev_monitor* udev_monitor_unref(udev_monitor* monitor) { return destroy(monitor); }
int udev_monitor_enable_receiving(udev_monitor*) { return statusOf(__func__); }
int udev_monitor_get_fd(udev_monitor*) { return fakeUdev().descriptor(); }
udev_device* udev_monitor_receive_device(udev_monitor*) { return fakeUdev().event(); }
// clang-format on

const char* udev_device_get_property_value(udev_device* device, const char* name) {
    return device->text(name);
}

const char* udev_device_get_sysattr_value(udev_device* device, const char* name) {
    return device->text(name);
}

udev_device* udev_device_get_parent(udev_device* device) {
    return device->ancestor(nullptr, nullptr);
}

udev_device* udev_device_get_parent_with_subsystem_devtype(udev_device* device,
                                                           const char* subsystem,
                                                           const char* type) {
    return device->ancestor(subsystem, type);
}

udev_device* udev_device_new_from_syspath(udev* /*context*/, const char* path) {
    return fakeUdev().device(path);
}

int udev_enumerate_add_match_subsystem(udev_enumerate* search, const char* subsystem) {
    fakeUdev().keepOf(search->paths, subsystem);
    return statusOf(__func__);
}

int udev_enumerate_add_match_parent(udev_enumerate* search, udev_device* parent) {
    fakeUdev().keepBelow(search->paths, *parent);
    return statusOf(__func__);
}

int udev_enumerate_scan_devices(udev_enumerate* search) {
    search->found.reserve(search->paths.size());
    for (const std::string& path : search->paths) {
        if (!search->found.empty())
            search->found.back().next = &search->found.back() + 1;
        search->found.push_back({path});
    }
    return statusOf(__func__);
}

udev_list_entry* udev_enumerate_get_list_entry(udev_enumerate* search) {
    return search->found.empty() ? nullptr : search->found.data();
}

udev_monitor* udev_monitor_new_from_netlink(udev* /*context*/, const char* /*name*/) {
    return make<udev_monitor>(__func__);
}

int udev_monitor_filter_add_match_subsystem_devtype(udev_monitor* /*monitor*/,
                                                    const char* /*subsystem*/,
                                                    const char* /*type*/) {
    return statusOf(__func__);
}

}  // extern "C"
