// libudev's functions, as far as the product calls them: each property, attribute and relation is
// there or missing, and says anything. What is not given back is a leak, what is given back twice
// is freed twice, and the sanitizer sees both.

#include <libudev.h>
#include <sys/stat.h>

#include <cerrno>
#include <map>
#include <memory>
#include <optional>

#include "fuzz/Input.h"

struct udev {};
struct udev_monitor {};
struct udev_list_entry {
    int left;
};
struct udev_enumerate {
    udev_list_entry found{1 + input.byte() % 4};
};

struct udev_device {
    /// A device says the same each time it is asked: libudev keeps what it has read.
    const char* text(const char* name) {
        static const std::string usual[] = {
            "video4linux", "sound",    "usb",   "usb_device", "usb_interface", "0e", "01",
            ":capture:",   "pcmC0D1c", "1-2.3", "remove",     "046d",          "3"};
        const auto [entry, isNew] = said.try_emplace(name);
        if (isNew && !input.seldom())
            entry->second = input.byte() % 4 == 3 ? input.text() : input.oneOf(usual);
        return entry->second ? entry->second->c_str() : nullptr;
    }
    /// The chain of parents ends with the input.
    udev_device* ancestor() {
        if (!parent && !input.atEnd())
            parent.reset(any());
        return parent.get();
    }
    static udev_device* any() { return input.byte() % 4 == 3 ? nullptr : new udev_device; }

    std::map<std::string, std::optional<std::string>> said{};
    std::unique_ptr<udev_device> parent{};
};

extern "C" {
// clang-format off
#define TEXT(name) const char* udev_device_get_##name(udev_device* device) { return device->text(#name); }
TEXT(syspath) TEXT(sysname) TEXT(sysnum) TEXT(subsystem) TEXT(devtype) TEXT(action)
#define TEXT_OF(kind) const char* udev_device_get_##kind(udev_device* device, const char* name) { return device->text(name); }
TEXT_OF(property_value) TEXT_OF(sysattr_value)
#define NEW(type, create, ...) type* create(__VA_ARGS__) { return input.seldom() ? nullptr : new type; }
NEW(udev, udev_new)
NEW(udev_enumerate, udev_enumerate_new, udev*)
NEW(udev_monitor, udev_monitor_new_from_netlink, udev*, const char*)
// NOLINTNEXTLINE(bugprone-macro-parentheses): a type stands alone
#define UNREF(type) type* type##_unref(type* object) { delete object; return nullptr; }
UNREF(udev) UNREF(udev_enumerate) UNREF(udev_monitor) UNREF(udev_device)
#define STATUS(name, ...) int udev_##name(__VA_ARGS__) { return input.seldom() ? -EINVAL : 0; }
STATUS(enumerate_add_match_subsystem, udev_enumerate*, const char*)
STATUS(enumerate_add_match_parent, udev_enumerate*, udev_device*)
STATUS(enumerate_scan_devices, udev_enumerate*)
STATUS(monitor_filter_add_match_subsystem_devtype, udev_monitor*, const char*, const char*)
STATUS(monitor_enable_receiving, udev_monitor*)
STATUS(monitor_get_fd, udev_monitor*)
// The product opens this path, so it is always one that may be opened.
const char* udev_device_get_devnode(udev_device*) { return input.seldom() ? nullptr : "/dev/null"; }
udev_device* udev_device_get_parent(udev_device* device) { return device->ancestor(); }
udev_device* udev_device_get_parent_with_subsystem_devtype(udev_device* device, const char*, const char*) { return device->ancestor(); }
udev_device* udev_device_new_from_syspath(udev*, const char*) { return udev_device::any(); }
udev_list_entry* udev_list_entry_get_next(udev_list_entry* entry) { return --entry->left > 0 ? entry : nullptr; }
udev_list_entry* udev_enumerate_get_list_entry(udev_enumerate* search) { return udev_list_entry_get_next(&search->found); }
const char* udev_list_entry_get_name(udev_list_entry*) { return "/sys/any"; }
// clang-format on

dev_t udev_device_get_devnum(udev_device* /*device*/) {
    struct stat node {};
    stat("/dev/null", &node);
    return input.seldom() ? 0 : node.st_rdev;
}

udev_device* udev_monitor_receive_device(udev_monitor*) {
    static constexpr int failures[] = {EAGAIN, EINTR, ENOBUFS};
    errno = input.oneOf(failures);
    return input.atEnd() ? nullptr : udev_device::any();
}
}
