// A udev in which each property, attribute and relation is there or missing, and says anything.

#include <sys/stat.h>

#include <cerrno>
#include <map>
#include <memory>
#include <optional>

#include "fuzz/Input.h"
#include "tests/linux/FakeUdev.h"

namespace {

udev_device* anyDevice();

struct AnyDevice : udev_device {
    /// A device says the same each time it is asked: libudev keeps what it has read.
    const char* text(const char* name) override {
        static const std::string usual[] = {
            "video4linux", "sound",    "usb",   "usb_device", "usb_interface", "0e", "01",
            ":capture:",   "pcmC0D1c", "1-2.3", "remove",     "0abc",          "3"};
        // The product opens this path, so it is always one that may be opened.
        if (std::string_view(name) == "devnode")
            return input.seldom() ? nullptr : "/dev/null";
        const auto [entry, isNew] = said.try_emplace(name);
        if (isNew && !input.seldom())
            entry->second = input.byte() % 4 == 3 ? input.text() : input.oneOf(usual);
        return entry->second ? entry->second->c_str() : nullptr;
    }
    dev_t number() override {
        struct stat node {};
        stat("/dev/null", &node);
        return input.seldom() ? 0 : node.st_rdev;
    }
    /// The chain of parents ends with the input.
    udev_device* ancestor(const char* /*subsystem*/, const char* /*type*/) override {
        if (!parent && !input.atEnd())
            parent.reset(anyDevice());
        return parent.get();
    }

    std::map<std::string, std::optional<std::string>> said;
    std::unique_ptr<udev_device> parent;
};

udev_device* anyDevice() {
    return input.byte() % 4 == 3 ? nullptr : new AnyDevice;
}

struct AnyUdev : FakeUdev {
    using Paths = std::vector<std::string>;
    bool fails(const char* /*function*/) override { return input.seldom(); }
    int descriptor() override { return input.seldom() ? -1 : 0; }
    Paths devices() override { return Paths(input.byte() % 4, "/sys/any"); }
    void keepOf(Paths& /*paths*/, const char* /*subsystem*/) override {}
    void keepBelow(Paths& /*paths*/, udev_device& /*parent*/) override {}
    udev_device* device(const char* /*path*/) override { return anyDevice(); }
    udev_device* event() override {
        static constexpr int failures[] = {EAGAIN, EINTR, ENOBUFS};
        errno = input.oneOf(failures);
        return input.atEnd() ? nullptr : anyDevice();
    }
};

}  // namespace

FakeUdev& fakeUdev() {
    static AnyUdev any;
    return any;
}
