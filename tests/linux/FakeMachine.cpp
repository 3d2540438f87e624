#include "tests/linux/FakeMachine.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <linux/usb/video.h>
#include <linux/uvcvideo.h>
#include <linux/videodev2.h>
#include <sys/mman.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <span>
#include <sstream>

#include "tests/linux/FakeUdev.h"

namespace {

using Fields = FakeMachine::Fields;

/// Makes a call fail for the reason with this name; any other word is none.
int fail(const std::string& error) {
    for (errno = 1; errno < 200; ++errno)
        if (const char* name = strerrorname_np(errno); name != nullptr && error == name)
            return -1;
    return errno = 0;
}

udev_device* deviceOf(const Fields& fields) {
    const std::string& path = fields.at("syspath");
    const std::string above = path.substr(0, path.rfind('/'));
    return new udev_device{
        fields, std::unique_ptr<udev_device>(udev_device_new_from_syspath(nullptr, above.c_str()))};
}

/// Makes a call on the device file at this path fail if there is none, or if it says so.
int reach(const char* path) {
    const auto file = fakeMachine.tree.find(path);
    return fail(file == fakeMachine.tree.end() ? "ENOENT" : file->second["error"]);
}

int queryExtension(std::string& value, const uvc_xu_control_query& query) {
    const std::string answer = query.query == UVC_GET_LEN ? std::string("\2\0", 2) : value;
    if (query.unit != 16 || query.size != answer.size())
        return query.unit != 16 ? ENOENT : ENOBUFS;
    if (query.query == UVC_SET_CUR)
        value.assign(query.data, query.data + query.size);
    else
        std::ranges::copy(answer, query.data);
    return 0;
}

/// Answers as the kernel's driver does, with its checks of an argument's form.
int answer(Fields& node, unsigned long request, void* argument) {
    const auto number = [&](const std::string& field) {
        return std::strtoll(node[field].c_str(), nullptr, 0);
    };
    if (request == UVCIOC_CTRL_QUERY)
        return queryExtension(node["extension"], *static_cast<uvc_xu_control_query*>(argument));
    if (request == VIDIOC_QUERYCAP) {
        auto& capability = *static_cast<v4l2_capability*>(argument);
        std::ranges::copy(node["card"], capability.card);
        capability.capabilities = static_cast<std::uint32_t>(number("capabilities"));
        capability.device_caps = static_cast<std::uint32_t>(number("device_caps"));
    } else if (request == VIDIOC_QUERY_EXT_CTRL) {
        auto& control = *static_cast<v4l2_query_ext_ctrl*>(argument);
        control.minimum = number(fmt::format("{:x}.minimum", control.id));
        control.maximum = number(fmt::format("{:x}.maximum", control.id));
        control.flags = static_cast<std::uint32_t>(number(fmt::format("{:x}.flags", control.id)));
    } else if (request != VIDIOC_REQBUFS) {
        const auto& all = *static_cast<v4l2_ext_controls*>(argument);
        EXPECT_EQ(all.which, static_cast<std::uint32_t>(V4L2_CTRL_WHICH_CUR_VAL));
        EXPECT_EQ(all.count, all.controls->id == V4L2_CID_PAN_ABSOLUTE ? 2U : 1U);
        for (auto& control : std::span(all.controls, all.count)) {
            std::string& value = node.at(fmt::format("{:x}", std::uint32_t{control.id}));
            if (request == VIDIOC_S_EXT_CTRLS)
                value = std::to_string(control.value);
            else
                control.value = std::stoi(value);
        }
    }
    return 0;
}

}  // namespace

void FakeMachine::reset() {
    tree.clear();
    events.clear();
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
        else if (word.starts_with("event="))
            events.emplace_back(fields)["action"] = value;
        else
            fields[word.substr(0, sign)] = value;
    }
}

int udevStatus(const char* function) {
    return fakeMachine.tree["udev"]["fails"] == function ? -EINVAL : 0;
}

extern "C" {

const char* udev_device_get_property_value(udev_device* device, const char* name) {
    const std::string& text = device->said[name];
    return text.empty() ? nullptr : text.c_str();
}

dev_t udev_device_get_devnum(udev_device* device) {
    return makedev(1, device->said["renumbered"].empty() ? 3 : 4);  // the first is /dev/null's
}

udev_device* udev_device_get_parent_with_subsystem_devtype(udev_device* device,
                                                           const char* subsystem,
                                                           const char* type) {
    udev_device* parent = device->parent.get();
    while (parent != nullptr && subsystem != nullptr &&
           (parent->said["subsystem"] != subsystem || parent->said["devtype"] != type))
        parent = parent->parent.get();
    return parent;
}

udev_device* udev_device_new_from_syspath(udev* /*context*/, const char* path) {
    const auto found = fakeMachine.tree.find(path);
    return found == fakeMachine.tree.end() ? nullptr : deviceOf(found->second);
}

udev_enumerate* udev_enumerate_new(udev* /*context*/) {
    auto search = std::make_unique<udev_enumerate>();
    for (const auto& [path, fields] : fakeMachine.tree)
        search->found.push_back({path});
    return udevStatus(__func__) < 0 ? nullptr : search.release();
}

int udev_enumerate_add_match_subsystem(udev_enumerate* search, const char* subsystem) {
    std::erase_if(search->found, [&](const udev_list_entry& entry) {
        return fakeMachine.tree[entry.path]["subsystem"] != subsystem;
    });
    return udevStatus(__func__);
}

int udev_enumerate_add_match_parent(udev_enumerate* search, udev_device* parent) {
    std::erase_if(search->found, [&](const udev_list_entry& entry) {
        return !entry.path.starts_with(parent->said["syspath"]);
    });
    return udevStatus(__func__);
}

int udev_monitor_get_fd(udev_monitor* /*monitor*/) {
    static const int alwaysReadable = ::memfd_create("", 0);
    return alwaysReadable;
}

udev_device* udev_monitor_receive_device(udev_monitor* /*monitor*/) {
    if (fakeMachine.events.empty())
        return fail("EAGAIN"), nullptr;
    const Fields about = fakeMachine.events.front();
    fakeMachine.events.pop_front();
    return fail(about.at("action")) < 0 ? nullptr : deviceOf(about);
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
    errno = answer(node, request, argument);
    return errno == 0 ? 0 : -1;
}

int __wrap_faccessat(int /*folder*/, const char* path, int /*mode*/, int /*flags*/) {
    return reach(path);
}

}  // extern "C"
