#include "platform/linux/devices/LinuxUsb.h"

#include <cerrno>
#include <set>
#include <string>
#include <utility>

#include "platform/linux/controls/ControlRequests.h"
#include "platform/linux/devices/NodeFacts.h"
#include "platform/linux/devices/Udev.h"
#include "platform/linux/devices/VideoNode.h"

namespace platform {
namespace {

/// One stay of a device at its port: the kernel numbers each anew.
struct Attachment {
    std::string syspath;
    std::string number;

    /// Returns the device, or null when this stay has ended.
    UdevDevicePtr device(udev* context) const {
        auto found = udevDevice(context, syspath);
        const bool same = found && udevAttribute(found.get(), "devnum") == number;
        return same ? std::move(found) : nullptr;
    }

    IOReturn presence() const {
        const UdevPtr context(udev_new());
        return device(context.get()) ? kIOReturnSuccess : ENODEV;
    }
};

class LinuxUsbInterface : public UsbInterface {
  public:
    LinuxUsbInterface(Attachment attachment, udev_device* interface)
        : attachment_(std::move(attachment)),
          syspath_(textOrEmpty(udev_device_get_syspath(interface))) {
        all().insert(this);
        const auto field = [&](const char* name, int base) {
            return static_cast<std::uint8_t>(udevNumber(interface, name, base).value_or(0));
        };
        descriptor_ = {field("bInterfaceClass", 16), field("bInterfaceSubClass", 16),
                       field("bInterfaceProtocol", 16), field("bAlternateSetting", 10)};
    }

    LinuxUsbInterface(const LinuxUsbInterface&) = delete;
    LinuxUsbInterface& operator=(const LinuxUsbInterface&) = delete;
    ~LinuxUsbInterface() override { all().erase(this); }

    /// Closes the node at `path` wherever it is kept open.
    static void giveUp(const std::string& path) {
        for (LinuxUsbInterface* interface : all())
            if (interface->path_ == path)
                interface->node_.close();
    }

    IOReturn createPlugIn() override { return attachment_.presence(); }
    IOReturn queryInterface() override { return attachment_.presence(); }
    Descriptor descriptor() const override { return descriptor_; }

    /// The node stays open between two requests: it shuts nobody out, and to look it up again takes
    /// many times as long as a request. It is closed when a request finds that the camera has gone,
    /// or by `giveUp`.
    IOReturn open() override {
        const IOReturn status = node_.isOpen() ? kIOReturnSuccess : openNode();
        isOpen_ = status == kIOReturnSuccess;
        return status;
    }

    IOReturn controlRequest(IOUSBDevRequest& request) override {
        if (!isOpen_)
            return EBADF;
        const IOReturn status = performControlRequest(node_, request);
        if (status == ENODEV)
            node_.close();
        return status;
    }

    IOReturn close() override {
        isOpen_ = false;
        return kIOReturnSuccess;
    }

  private:
    /// Opens the first node that delivers video: the driver gives its controls to that one, and
    /// none to the metadata node beside it.
    IOReturn openNode() {
        node_.close();
        const UdevPtr context(udev_new());
        const auto present = attachment_.device(context.get());
        const auto interface = present ? udevDevice(context.get(), syspath_) : nullptr;
        if (!interface)
            return ENODEV;
        auto nodes = udevDevices(context.get(), "video4linux", interface.get());
        sortByNumber(nodes);
        IOReturn failure = ENODEV;
        for (const UdevDevicePtr& node : nodes) {
            path_ = textOrEmpty(udev_device_get_devnode(node.get()));
            const IOReturn status = node_.open(path_, udev_device_get_devnum(node.get()));
            std::string card;
            if (status == kIOReturnSuccess && capturesVideo(node_, card))
                return kIOReturnSuccess;
            // Why a node can't be opened tells more than that no other one will do.
            if (status != kIOReturnSuccess)
                failure = status;
        }
        node_.close();
        return failure;
    }

    Attachment attachment_;
    /// Those that may keep a node open. Main thread; never destroyed, as one may end after it.
    static std::set<LinuxUsbInterface*>& all() {
        static auto* const interfaces = new std::set<LinuxUsbInterface*>;
        return *interfaces;
    }

    std::string syspath_;
    Descriptor descriptor_;
    std::string path_;  // of the node
    VideoNode node_;
    bool isOpen_ = false;  // for requests
};

class LinuxUsbDevice : public UsbDevice {
  public:
    explicit LinuxUsbDevice(udev_device* device)
        : attachment_{textOrEmpty(udev_device_get_syspath(device)),
                      udevAttribute(device, "devnum")},
          vendorID_(usbID(device, "idVendor")),
          productID_(usbID(device, "idProduct")),
          locationID_(usbLocation(textOrEmpty(udev_device_get_sysname(device))).id) {}

    IOReturn createPlugIn() override { return attachment_.presence(); }
    IOReturn queryInterface() override { return attachment_.presence(); }
    std::uint16_t vendorID() const override { return vendorID_; }
    std::uint16_t productID() const override { return productID_; }
    std::uint32_t locationID() const override { return locationID_; }

    IOReturn interfaces(std::vector<std::shared_ptr<UsbInterface>>& found) override {
        const UdevPtr context(udev_new());
        const auto device = attachment_.device(context.get());
        if (!device)
            return ENODEV;
        for (const UdevDevicePtr& interface : usbInterfaces(context.get(), device.get()))
            found.push_back(std::make_shared<LinuxUsbInterface>(attachment_, interface.get()));
        return kIOReturnSuccess;
    }

  private:
    Attachment attachment_;
    std::uint16_t vendorID_;
    std::uint16_t productID_;
    std::uint32_t locationID_;
};

}  // namespace

void LinuxUsb::nodeLeft(const std::string& path) {
    LinuxUsbInterface::giveUp(path);
}

std::vector<std::shared_ptr<UsbDevice>> LinuxUsb::devices() {
    std::vector<std::shared_ptr<UsbDevice>> found;
    const UdevPtr context(udev_new());
    if (!context)
        return found;
    for (const UdevDevicePtr& device : udevDevices(context.get(), "usb", nullptr))
        if (isUsb(device.get(), "usb_device"))
            found.push_back(std::make_shared<LinuxUsbDevice>(device.get()));
    return found;
}

}  // namespace platform
