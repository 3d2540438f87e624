// libudev's functions, as far as the product calls them: each property, attribute and relation is
// there or missing, and says anything. The references are counted.

#include <libudev.h>

#include <cerrno>
#include <deque>
#include <map>
#include <utility>

#include "fuzz/Input.h"

struct udev_device {
    int references = 1;
    std::map<std::string, std::pair<bool, std::string>> said{};
    udev_device* parent = nullptr;
};
struct udev_list_entry {
    udev_list_entry* next;
};

namespace {

std::deque<udev_device> devices;
std::deque<udev_list_entry> entries;
int others = 0;  // references to the context, the searches and the monitors

udev_device* newDevice() {
    return input.below(4) == 3 ? nullptr : &devices.emplace_back();
}

/// A device says the same each time it is asked: libudev keeps what it has read.
const char* text(udev_device* device, const char* name) {
    static const std::string usual[] = {
        "video4linux", "sound",    "usb",   "usb_device", "usb_interface", "0e", "01",
        ":capture:",   "pcmC0D1c", "1-2.3", "remove",     "046d",          "3"};
    const auto [entry, isNew] = device->said.try_emplace(name);
    if (isNew)
        entry->second = {!input.seldom(), input.below(4) == 3 ? input.text() : input.oneOf(usual)};
    return entry->second.first ? entry->second.second.c_str() : nullptr;
}

/// Belongs to its child; the chain of parents ends with the input.
udev_device* parentOf(udev_device* device) {
    if (device->parent == nullptr && !input.atEnd() && (device->parent = newDevice()) != nullptr)
        device->parent->references = 0;
    return device->parent;
}

}  // namespace

void endUdev() {
    for (const udev_device& device : devices)
        require(device.references == 0, "a device is given back once");
    require(std::exchange(others, 0) == 0, "udev's other objects are given back");
    devices.clear();
    entries.clear();
}

extern "C" {
// clang-format off
#define TEXT(name) \
    const char* udev_device_get_##name(udev_device* device) { return text(device, #name); }
TEXT(syspath) TEXT(sysname) TEXT(sysnum) TEXT(subsystem) TEXT(devtype) TEXT(action)
#undef TEXT
#define OTHER(type, create, ...) \
    type* create(__VA_ARGS__) { return input.seldom() ? nullptr : (++others, reinterpret_cast<type*>(&others)); } \
    type* type##_unref(type*) { return --others, nullptr; }
OTHER(udev, udev_new)
OTHER(udev_enumerate, udev_enumerate_new, udev*)
OTHER(udev_monitor, udev_monitor_new_from_netlink, udev*, const char*)
#undef OTHER
#define STATUS(name, ...) int udev_##name(__VA_ARGS__) { return input.seldom() ? -EINVAL : 0; }
STATUS(enumerate_add_match_subsystem, udev_enumerate*, const char*)
STATUS(enumerate_add_match_parent, udev_enumerate*, udev_device*)
STATUS(enumerate_scan_devices, udev_enumerate*)
STATUS(monitor_filter_add_match_subsystem_devtype, udev_monitor*, const char*, const char*)
STATUS(monitor_enable_receiving, udev_monitor*)
STATUS(monitor_get_fd, udev_monitor*)
#undef STATUS
    #define TEXT_OF(kind) \
    const char* udev_device_get_##kind(udev_device* device, const char* name) { return text(device, name); }
TEXT_OF(property_value) TEXT_OF(sysattr_value)
#undef TEXT_OF
/// The product opens this path, so it is always one that may be opened.
const char* udev_device_get_devnode(udev_device*) { return input.seldom() ? nullptr : "/dev/null"; }
udev_device* udev_device_get_parent(udev_device* device) { return parentOf(device); }
udev_device* udev_device_get_parent_with_subsystem_devtype(udev_device* device, const char*, const char*) { return parentOf(device); }
udev_device* udev_device_new_from_syspath(udev*, const char*) { return newDevice(); }
udev_device* udev_device_unref(udev_device* device) { return --device->references, nullptr; }
udev_list_entry* udev_list_entry_get_next(udev_list_entry* entry) { return entry->next; }
const char* udev_list_entry_get_name(udev_list_entry*) { return "/sys/any"; }
// clang-format on

udev_list_entry* udev_enumerate_get_list_entry(udev_enumerate*) {
    udev_list_entry* first = nullptr;
    for (std::size_t count = input.below(4); count > 0; --count)
        first = &entries.emplace_back(udev_list_entry{first});
    return first;
}

udev_device* udev_monitor_receive_device(udev_monitor*) {
    static constexpr int failures[] = {EAGAIN, EINTR, ENOBUFS};
    errno = input.oneOf(failures);
    return input.atEnd() ? nullptr : newDevice();
}
}
