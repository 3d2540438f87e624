#pragma once

#include <deque>
#include <map>
#include <string>
#include <vector>

#include "tests/linux/FakeNode.h"
#include "tests/linux/FakeUdev.h"

/// What libudev and the kernel tell this process of its machine: what machine.txt says, until a
/// test breaks something. Its device files can be opened, and are nodes of the kernel's driver.
struct FakeMachine : FakeUdev {
    using Fields = std::map<std::string, std::string>;
    using Paths = std::vector<std::string>;

    /// The machine that all code of this process is on.
    static FakeMachine& get();

    /// Makes it anew, as the file says.
    void reset();

    /// Changes it as a line of the file does: a field is set, or removed when nothing is behind its
    /// sign. "gone" removes what stands before it, and all that is below. "error" is what a device
    /// file can't be opened for. An "event" is one more that waits to be heard from udev; one about
    /// "udev" itself is the error with which it tells of none, and "fails" names what it can't do.
    void change(const std::string& line);

    bool fails(const char* function) override { return tree["udev"]["fails"] == function; }
    int descriptor() override;
    Paths devices() override;
    void keepOf(Paths& paths, const char* subsystem) override;
    void keepBelow(Paths& paths, udev_device& parent) override;
    udev_device* device(const char* path) override;
    udev_device* event() override;

    /// What a device says by now.
    Fields fieldsOf(const std::string& path);

    std::map<std::string, Fields> tree;
    std::deque<std::pair<std::string, Fields>> events;  ///< what happened, and to which device
    std::map<std::string, FakeNode> nodes;              ///< behind the device files
    std::map<int, std::string> open;                    ///< the device files that are, now
};
