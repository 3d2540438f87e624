// A libudev that knows the machine of the tests. What is not given back is a leak, what is given
// back twice is freed twice, and the sanitizer sees both.

#include <sys/mman.h>

#include <cerrno>

#include "tests/linux/FakeMachine.h"

struct udev {};
struct udev_monitor {};
struct udev_list_entry {
    std::string path;
    std::unique_ptr<udev_list_entry> next;
};
struct udev_enumerate {
    std::string subsystem;
    std::string below;  ///< the path that all found ones begin with
    std::unique_ptr<udev_list_entry> found;
};

namespace {

/// What the libudev function of this name comes to, now: 0, or an error.
int status(const char* function) {
    return fakeMachine.tree["/udev"]["fails"] == function ? -EINVAL : 0;
}

/// A field of a device that is empty is missing.
const char* field(udev_device* device, const char* name) {
    const std::string& text = device->said[name];
    return text.empty() ? nullptr : text.c_str();
}

}  // namespace

extern "C" {

// clang-format off
udev* udev_new() { return status(__func__) < 0 ? nullptr : new udev; }
udev* udev_unref(udev* object) { return delete object, nullptr; }
const char* udev_device_get_syspath(udev_device* device) { return field(device, "syspath"); }
const char* udev_device_get_sysname(udev_device* device) { return field(device, "sysname"); }
const char* udev_device_get_sysnum(udev_device* device) { return field(device, "sysnum"); }
const char* udev_device_get_subsystem(udev_device* device) { return field(device, "subsystem"); }
const char* udev_device_get_devtype(udev_device* device) { return field(device, "devtype"); }
const char* udev_device_get_devnode(udev_device* device) { return field(device, "devnode"); }
const char* udev_device_get_action(udev_device* device) { return field(device, "action"); }
const char* udev_device_get_property_value(udev_device* device, const char* name) {
    return field(device, name);
}
const char* udev_device_get_sysattr_value(udev_device* device, const char* name) {
    return field(device, name);
}
udev_device* udev_device_get_parent(udev_device* device) { return device->parent.get(); }
// The device files are all /dev/null, but for a number that another device has by now.
dev_t udev_device_get_devnum(udev_device*) { return makedev(1, status(__func__) < 0 ? 4 : 3); }
udev_device* udev_device_unref(udev_device* device) { return delete device, nullptr; }
udev_enumerate* udev_enumerate_new(udev*) {
    return status(__func__) < 0 ? nullptr : new udev_enumerate;
}
udev_enumerate* udev_enumerate_unref(udev_enumerate* search) { return delete search, nullptr; }
udev_list_entry* udev_enumerate_get_list_entry(udev_enumerate* search) {
    return search->found.get();
}
udev_list_entry* udev_list_entry_get_next(udev_list_entry* entry) { return entry->next.get(); }
const char* udev_list_entry_get_name(udev_list_entry* entry) { return entry->path.c_str(); }
udev_monitor* udev_monitor_new_from_netlink(udev*, const char*) {
    return status(__func__) < 0 ? nullptr : new udev_monitor;
}
udev_monitor* udev_monitor_unref(udev_monitor* monitor) { return delete monitor, nullptr; }
int udev_monitor_enable_receiving(udev_monitor*) { return status(__func__); }
int udev_monitor_filter_add_match_subsystem_devtype(udev_monitor*, const char*, const char*) {
    return status(__func__);
}
// clang-format on

udev_device* udev_device_get_parent_with_subsystem_devtype(udev_device* device,
                                                           const char* subsystem,
                                                           const char* type) {
    udev_device* parent = device->parent.get();
    while (parent != nullptr &&
           (parent->said["subsystem"] != subsystem || parent->said["devtype"] != type))
        parent = parent->parent.get();
    return parent;
}

udev_device* udev_device_new_from_syspath(udev* context, const char* path) {
    const auto found = fakeMachine.tree.find(path);
    if (found == fakeMachine.tree.end())
        return nullptr;
    const std::string above = found->first.substr(0, found->first.rfind('/'));
    std::unique_ptr<udev_device> parent(udev_device_new_from_syspath(context, above.c_str()));
    return new udev_device{found->second, std::move(parent)};
}

int udev_enumerate_add_match_subsystem(udev_enumerate* search, const char* subsystem) {
    search->subsystem = subsystem;
    return status(__func__);
}

int udev_enumerate_add_match_parent(udev_enumerate* search, udev_device* parent) {
    search->below = parent->said["syspath"];
    return status(__func__);
}

int udev_enumerate_scan_devices(udev_enumerate* search) {
    for (auto next = fakeMachine.tree.rbegin(); next != fakeMachine.tree.rend(); ++next)
        if (next->second["subsystem"] == search->subsystem &&
            next->first.starts_with(search->below))
            search->found.reset(new udev_list_entry{next->first, std::move(search->found)});
    return status(__func__);
}

int udev_monitor_get_fd(udev_monitor* /*monitor*/) {
    static const int alwaysReadable = ::memfd_create("", 0);
    return status(__func__) < 0 ? -1 : alwaysReadable;
}

udev_device* udev_monitor_receive_device(udev_monitor* /*monitor*/) {
    if (fakeMachine.events.empty())
        return fail("EAGAIN"), nullptr;
    auto device = std::move(fakeMachine.events.front());
    fakeMachine.events.pop_front();
    return fail(device->said["action"]) < 0 ? nullptr : device.release();
}

}  // extern "C"
