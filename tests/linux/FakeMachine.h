#pragma once

#include <sys/sysmacros.h>

// Other libraries in the process keep the real functions.
#pragma GCC visibility push(hidden)
#include <libudev.h>
#pragma GCC visibility pop

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

/// A script, or what it comes to.
using Lines = std::vector<std::string>;

/// A device as it was when libudev looked at it.
struct udev_device {
    std::map<std::string, std::string> said;
    std::unique_ptr<udev_device> parent;
};

/// What libudev and the kernel tell this process of its machine: what machine.txt says, until a
/// test changes something. Its device files can be opened, and are nodes of the kernel's driver.
struct [[gnu::visibility("hidden")]] FakeMachine {
    using Fields = std::map<std::string, std::string>;

    FakeMachine();

    /// Changes it as a line of the file does: sets a field, or makes what stands before "gone" go
    /// with all below it. An "action" waits to be heard from udev; one of "/udev" itself is the
    /// error with which it tells of none, and "fails" names what it can't do.
    void change(const std::string& line);

    std::map<std::string, Fields> tree;
    std::deque<std::unique_ptr<udev_device>> events;  ///< the devices as they were then
    std::map<int, std::string> open;                  ///< the device files that are, now
};

/// The machine that all code of this process is on.
inline FakeMachine fakeMachine;
