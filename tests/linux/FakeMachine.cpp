#include "tests/linux/FakeMachine.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>

extern "C" {
// The linker hands the program's own calls over to the functions that are called "wrap" here.
int __real_open(const char* path, int flags, ...);
int __real_close(int descriptor);
int __real_ioctl(int descriptor, unsigned long request, void* argument);
int __real_faccessat(int folder, const char* path, int mode, int flags);
}

namespace {

/// What a device says of itself stays as it was when it was looked up.
struct TreeDevice : udev_device {
    explicit TreeDevice(FakeMachine::Fields all) : fields(std::move(all)) {}

    const char* text(const char* name) override {
        const auto found = fields.find(name);
        return found == fields.end() ? nullptr : found->second.c_str();
    }
    dev_t number() override {
        struct stat null {};
        ::stat("/dev/null", &null);
        return null.st_rdev + (text("renumbered") == nullptr ? 0 : 1);
    }
    udev_device* ancestor(const char* subsystem, const char* type) override {
        const std::string path = fields.at("syspath");
        if (!parent)
            parent.reset(FakeMachine::get().device(path.substr(0, path.rfind('/')).c_str()));
        const auto is = [this](const char* name, const char* wanted) {
            const char* said = parent->text(name);
            return wanted == nullptr || (said != nullptr && std::strcmp(said, wanted) == 0);
        };
        const bool fits = !parent || (is("subsystem", subsystem) && is("devtype", type));
        return fits ? parent.get() : parent->ancestor(subsystem, type);
    }

    FakeMachine::Fields fields;
    std::unique_ptr<udev_device> parent;
};

/// Makes a call of the kernel's fail for the reason with this name; "" is none.
int fail(const std::string& error) {
    for (errno = 0; errno < 200 && !error.empty(); ++errno)
        if (const char* name = strerrorname_np(errno); name != nullptr && error == name)
            return -1;
    return 0;
}

/// The device file at `path`, or null when it is none of the machine's.
FakeMachine::Fields* deviceFile(const std::string& path) {
    const auto found = FakeMachine::get().tree.find(path);
    return found == FakeMachine::get().tree.end() ? nullptr : &found->second;
}

}  // namespace

FakeUdev& fakeUdev() {
    return FakeMachine::get();
}

FakeMachine& FakeMachine::get() {
    static FakeMachine machine;
    return machine;
}

void FakeMachine::reset() {
    tree.clear();
    events.clear();
    nodes.clear();
    std::ifstream file(QUELVO_LINUX_TESTS "/machine.txt");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with('/'))
            change(line);
}

void FakeMachine::change(const std::string& line) {
    std::istringstream words(line);
    std::string path, word;
    for (words >> path; words >> word;) {
        const std::size_t sign = word.find('=');
        const std::string key = word.substr(0, sign);
        std::string value = word.substr(sign + 1);
        std::ranges::replace(value, '~', ' ');
        if (word == "gone")
            std::erase_if(tree, [&](const auto& entry) { return entry.first.starts_with(path); });
        else if (key == "event")
            events.emplace_back(value, fieldsOf(path));
        else if (value.empty())
            tree[path].erase(key);
        else
            tree[path][key] = value;
    }
}

int FakeMachine::descriptor() {
    static const int alwaysReadable = __real_open("/dev/zero", O_RDONLY | O_CLOEXEC);
    return alwaysReadable;
}

FakeMachine::Paths FakeMachine::devices() {
    Paths paths;
    for (const auto& [path, fields] : tree)
        if (path.starts_with("/sys/"))
            paths.push_back(path);
    return paths;
}

void FakeMachine::keepOf(Paths& paths, const char* subsystem) {
    std::erase_if(paths, [&](const auto& path) { return tree[path]["subsystem"] != subsystem; });
}

void FakeMachine::keepBelow(Paths& paths, udev_device& parent) {
    std::erase_if(paths,
                  [&](const auto& path) { return !path.starts_with(parent.text("syspath")); });
}

FakeMachine::Fields FakeMachine::fieldsOf(const std::string& path) {
    Fields fields = tree.contains(path) ? tree[path] : Fields();
    const std::string name = path.substr(path.rfind('/') + 1);
    const std::string number = name.substr(name.find_last_not_of("0123456789") + 1);
    fields.insert({{"syspath", path}, {"sysname", name}, {"sysnum", number}});
    return fields;
}

udev_device* FakeMachine::device(const char* path) {
    return tree.contains(path) ? new TreeDevice(fieldsOf(path)) : nullptr;
}

udev_device* FakeMachine::event() {
    if (events.empty())
        return fail("EAGAIN"), nullptr;
    auto [action, about] = events.front();
    events.pop_front();
    if (about["syspath"] == "udev")
        return fail(action), nullptr;
    about["action"] = action;
    return new TreeDevice(about);
}

extern "C" {

int __wrap_open(const char* path, int flags, ...) {
    FakeMachine::Fields* file = deviceFile(path);
    if (file == nullptr) {
        va_list rest;
        va_start(rest, flags);
        const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
        va_end(rest);
        return __real_open(path, flags, mode);
    }
    if (fail((*file)["error"]) != 0)
        return -1;
    const int descriptor = __real_open("/dev/null", flags);
    FakeMachine::get().open[descriptor] = path;
    FakeMachine::get().nodes[path].capability.capabilities =
        (*file)["delivers"] == "video" ? V4L2_CAP_VIDEO_CAPTURE : V4L2_CAP_META_CAPTURE;
    return descriptor;
}

int __wrap_close(int descriptor) {
    FakeMachine::get().open.erase(descriptor);
    return __real_close(descriptor);
}

int __wrap_ioctl(int descriptor, unsigned long request, void* argument) {
    const auto found = FakeMachine::get().open.find(descriptor);
    if (found == FakeMachine::get().open.end())
        return __real_ioctl(descriptor, request, argument);
    errno = FakeMachine::get().nodes[found->second].call(request, argument);
    return errno == 0 ? 0 : -1;
}

int __wrap_faccessat(int folder, const char* path, int mode, int flags) {
    FakeMachine::Fields* file = deviceFile(path);
    return file == nullptr ? __real_faccessat(folder, path, mode, flags) : fail((*file)["error"]);
}

}  // extern "C"
