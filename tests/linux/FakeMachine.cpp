#include "tests/linux/FakeMachine.h"

#include <fmt/format.h>
#include <gst/gst.h>
#include <linux/usb/video.h>
#include <linux/uvcvideo.h>
#include <linux/videodev2.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <span>
#include <sstream>

namespace {

using Fields = FakeMachine::Fields;

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

}  // namespace

int fail(const std::string& error) {
    for (errno = 1; errno < 200; ++errno)
        if (const char* name = strerrorname_np(errno); name != nullptr && error == name)
            return -1;
    return errno = 0;
}

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
