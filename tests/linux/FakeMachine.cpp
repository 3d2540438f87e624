#include "tests/linux/FakeMachine.h"

#include <fmt/format.h>
#include <gst/gst.h>
#include <linux/usb/video.h>
#include <linux/uvcvideo.h>
#include <linux/videodev2.h>
#include <sys/mman.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <span>
#include <sstream>

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

using Fields = FakeMachine::Fields;

/// Makes a call fail for the reason with this name; any other word is none.
int fail(const std::string& error) {
    for (errno = 1; errno < 200; ++errno)
        if (const char* name = strerrorname_np(errno); name != nullptr && error == name)
            return -1;
    return errno = 0;
}

/// Makes a call on the device file at this path fail if there is none, or if it says so.
int reach(const char* path) {
    const auto file = fakeMachine.tree.find(path);
    return fail(file == fakeMachine.tree.end() ? "ENOENT" : file->second["error"]);
}

/// Answers as the kernel's driver does, with its checks of an argument's form: nothing, or an
/// error.
std::string answer(Fields& node, unsigned long request, void* argument) {
    const auto number = [&](const std::string& field) {
        return std::strtoll(node[field].c_str(), nullptr, 0);
    };
    if (request == UVCIOC_CTRL_QUERY) {
        const auto& query = *static_cast<uvc_xu_control_query*>(argument);
        const auto found = node.find(fmt::format("extension{}.{}", query.unit, query.selector));
        if (found == node.end() || query.size != 2)
            return found == node.end() ? "ENOENT" : "ENOBUFS";
        if (query.query == UVC_SET_CUR)
            found->second.assign(query.data, query.data + 2);
        else
            std::memcpy(query.data, query.query == UVC_GET_LEN ? "\2" : found->second.data(), 2);
    } else if (request == VIDIOC_QUERYCAP) {
        auto& capability = *static_cast<v4l2_capability*>(argument);
        node["card"].copy(reinterpret_cast<char*>(capability.card), sizeof capability.card);
        capability.bus_info[0] = 'u';  // of "usb", close behind the card's name
        capability.capabilities = static_cast<std::uint32_t>(number("capabilities"));
        capability.device_caps = static_cast<std::uint32_t>(number("device_caps"));
    } else if (request == VIDIOC_QUERY_EXT_CTRL) {
        auto& control = *static_cast<v4l2_query_ext_ctrl*>(argument);
        control.minimum = number(fmt::format("{:x}.minimum", control.id));
        control.maximum = number(fmt::format("{:x}.maximum", control.id));
        control.flags = static_cast<std::uint32_t>(number(fmt::format("{:x}.flags", control.id)));
    } else if (request != VIDIOC_REQBUFS) {
        const auto& all = *static_cast<v4l2_ext_controls*>(argument);
        // Neither pan nor tilt comes alone.
        const std::uint32_t expected = all.controls->id == V4L2_CID_PAN_ABSOLUTE ? 2 : 1;
        if (all.which != V4L2_CTRL_WHICH_CUR_VAL || all.count != expected)
            return "EINVAL";
        for (auto& control : std::span(all.controls, all.count)) {
            const auto value = node.find(fmt::format("{:x}", std::uint32_t{control.id}));
            if (value == node.end())
                return "EINVAL";
            if (request == VIDIOC_S_EXT_CTRLS)
                value->second = std::to_string(control.value);
            else
                control.value = static_cast<std::int32_t>(number(value->first));
        }
    }
    return "";
}

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

FakeMachine::FakeMachine() {
    std::ifstream file(QUELVO_LINUX_TESTS "/machine.txt");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with('/'))
            change(line);
}

void FakeMachine::change(const std::string& line) {
    std::istringstream words(line);
    std::string path, word;
    words >> path;
    Fields& fields = tree[path];
    fields["syspath"] = path;
    fields["sysname"] = path.substr(path.rfind('/') + 1);
    fields["sysnum"] = path.substr(path.find_last_not_of("0123456789") + 1);
    while (words >> word) {
        const std::size_t sign = word.find('=');
        std::string value = word.substr(sign + 1);
        std::ranges::replace(value, '~', ' ');
        if (word == "gone")
            std::erase_if(tree, [&](const auto& entry) { return entry.first.starts_with(path); });
        else
            tree[path][word.substr(0, sign)] = value;
        if (word.starts_with("action="))
            events.emplace_back(udev_device_new_from_syspath(nullptr, path.c_str()));
    }
}

extern "C" {

// What is not given back to libudev is a leak, what is given back twice is freed twice, and the
// sanitizer sees both.

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
    for (auto next = fakeMachine.tree.rbegin(); next != fakeMachine.tree.rend(); ++next) {
        auto& [path, fields] = *next;
        if (fields["subsystem"] == search->subsystem && path.starts_with(search->below))
            search->found.reset(new udev_list_entry{fields["syspath"], std::move(search->found)});
    }
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

// The linker hands the program's own calls over to the functions that are called "wrap" here.
int __real_open(const char* path, int flags, ...);
int __real_close(int descriptor);

int __wrap_open(const char* path, int flags, ...) {
    if (reach(path) < 0)
        return -1;
    const int descriptor = __real_open("/dev/null", flags);
    fakeMachine.open[descriptor] = path;
    return descriptor;
}

int __wrap_close(int descriptor) {
    fakeMachine.open.erase(descriptor);
    return __real_close(descriptor);
}

/// A signal breaks each call off once.
int __wrap_ioctl(int descriptor, unsigned long request, void* argument) {
    static bool interrupted = false;
    interrupted = !interrupted;
    Fields& node = fakeMachine.tree[fakeMachine.open.at(descriptor)];
    if (interrupted || fail(node["ioctl"]) < 0)
        return interrupted ? fail("EINTR") : -1;
    return fail(answer(node, request, argument));
}

int __wrap_faccessat(int /*folder*/, const char* path, int /*mode*/, int /*flags*/) {
    return reach(path);
}

GstPlugin* __real_gst_plugin_load_file(const char* path, GError** error);

/// The plug-ins are the real machine's, but for those of which something is said.
GstPlugin* __wrap_gst_plugin_load_file(const char* path, GError** error) {
    if (!fakeMachine.tree.contains(std::strrchr(path, '/')))
        return __real_gst_plugin_load_file(path, error);
    g_set_error_literal(error, GST_PLUGIN_ERROR, GST_PLUGIN_ERROR_MODULE, "gone");
    return nullptr;
}

}  // extern "C"
