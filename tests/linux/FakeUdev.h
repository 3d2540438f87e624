#pragma once

#include <sys/sysmacros.h>

// Other libraries in the process keep the real functions.
#pragma GCC visibility push(hidden)
#include <libudev.h>
#pragma GCC visibility pop

#include <map>
#include <memory>
#include <string>
#include <vector>

// A libudev that the program completes: what a device says, which devices there are and what
// happens to them are functions of libudev's that FakeUdev.cpp leaves to the program.

struct udev {};
struct udev_monitor {};
struct udev_device {
    std::map<std::string, std::string> said;
    std::unique_ptr<udev_device> parent;
};
struct udev_list_entry {
    std::string path;  ///< empty behind the last
};
struct udev_enumerate {
    std::string subsystem;
    udev_device* parent = nullptr;
    std::vector<udev_list_entry> found;
};

/// What the libudev function of this name comes to, this time: 0, or an error. By the program.
int udevStatus(const char* function);
