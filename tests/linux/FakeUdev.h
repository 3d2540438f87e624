#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

/// A device as libudev hands it out.
struct udev_device {
    virtual ~udev_device() = default;

    /// What it says: a field ("sysname"), a property or an attribute; null when it has none.
    virtual const char* text(const char* name) = 0;

    virtual dev_t number() = 0;

    /// Its parent, or the next ancestor of that kind when one is given; null at the root. Owned by
    /// this device.
    virtual udev_device* ancestor(const char* subsystem, const char* type) = 0;
};

/// What libudev's functions say in this process, which has it in the place of the real one.
struct FakeUdev {
    virtual ~FakeUdev() = default;

    /// Whether the libudev function of this name fails, this time.
    virtual bool fails(const char* function) = 0;

    /// The monitor's descriptor.
    virtual int descriptor() = 0;

    /// The devices that a search starts with, and those it keeps: of a subsystem, below a device.
    virtual std::vector<std::string> devices() = 0;
    virtual void keepOf(std::vector<std::string>& paths, const char* subsystem) = 0;
    virtual void keepBelow(std::vector<std::string>& paths, udev_device& parent) = 0;

    /// The device at that path, and that of the next event; null, with `errno`, for none. The
    /// caller owns it.
    virtual udev_device* device(const char* path) = 0;
    virtual udev_device* event() = 0;
};

/// Chosen by the program before it calls libudev.
FakeUdev& fakeUdev();
