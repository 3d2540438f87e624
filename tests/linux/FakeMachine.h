#pragma once

#include <deque>

#include "tests/linux/FakeUdev.h"

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
