#pragma once

#include <deque>
#include <map>
#include <string>

/// What libudev and the kernel tell this process of its machine: what machine.txt says, until a
/// test changes something. Its device files can be opened, and are nodes of the kernel's driver.
struct FakeMachine {
    using Fields = std::map<std::string, std::string>;

    /// Makes it anew, as the file says.
    void reset();

    /// Changes it as a line of the file does: sets a field, or makes what stands before "gone" go
    /// with all below it. An "event" waits to be heard from udev; one of "udev" itself is the error
    /// with which it tells of none, and "fails" names what it can't do.
    void change(const std::string& line);

    std::map<std::string, Fields> tree;
    std::deque<Fields> events;        ///< the devices as they were then, with an "action"
    std::map<int, std::string> open;  ///< the device files that are, now
};

/// The machine that all code of this process is on.
inline FakeMachine fakeMachine;
