#include "platform/linux/devices/LinuxUsb.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string>
#include <utility>

#include "platform/linux/controls/ControlRequests.h"
#include "platform/linux/devices/LinuxCapture.h"
#include "platform/linux/devices/Udev.h"

namespace platform {
namespace {

IOReturn presence(const Attachment& attachment) {
    const UdevPtr context(udev_new());
    return udevDevice(context.get(), attachment) ? kIOReturnSuccess : ENODEV;
}

class LinuxUsbInterface : public UsbInterface {
  public:
    LinuxUsbInterface(Attachment attachment, udev_device* interface, KeptNode& kept,
                      SilentCameras& silent)
        : attachment_(std::move(attachment)),
          syspath_(textOrEmpty(udev_device_get_syspath(interface))),
          kept_(kept),
          silent_(silent) {
        const auto field = [&](const char* name, int base) {
            return static_cast<std::uint8_t>(udevNumber(interface, name, base).value_or(0));
        };
        descriptor_ = {field("bInterfaceClass", 16), field("bInterfaceSubClass", 16),
                       field("bInterfaceProtocol", 16), field("bAlternateSetting", 10)};
    }

    IOReturn createPlugIn() override { return presence(attachment_); }
    IOReturn queryInterface() override { return presence(attachment_); }
    Descriptor descriptor() const override { return descriptor_; }

    IOReturn open() override {
        return node_.expired() ? unlessSilent([this] { return openNode(); }) : kIOReturnSuccess;
    }

    IOReturn controlRequest(IOUSBDevRequest& request) override {
        const auto node = node_.lock();
        if (!node)
            return EBADF;
        const IOReturn status = unlessSilent([&] { return performControlRequest(*node, request); });
        if (status == ENODEV)
            kept_.close();
        return status;
    }

    /// The node stays open, for the next request.
    IOReturn close() override { return kIOReturnSuccess; }

  private:
    /// Makes a call that waits for the camera, unless the camera has just let one time out.
    template <class Call>
    IOReturn unlessSilent(const Call& call) {
        if (silent_.contains(attachment_))
            return ETIMEDOUT;
        const IOReturn status = call();
        if (status == ETIMEDOUT)
            silent_.add(attachment_);
        return status;
    }

    /// Opens the first node that delivers video: the driver gives its controls to that one, and
    /// none to the metadata node beside it.
    IOReturn openNode() {
        const UdevPtr context(udev_new());
        const auto present = udevDevice(context.get(), attachment_);
        const auto interface = present ? udevDevice(context.get(), syspath_) : nullptr;
        if (!interface)
            return ENODEV;
        auto candidates = udevDevices(context.get(), "video4linux", interface.get());
        sortByNumber(candidates);
        IOReturn failure = ENODEV;
        for (const UdevDevicePtr& candidate : candidates) {
            const std::string path = textOrEmpty(udev_device_get_devnode(candidate.get()));
            auto node = std::make_unique<VideoNode>();
            const IOReturn status = node->open(path, udev_device_get_devnum(candidate.get()));
            std::string card;
            if (status == kIOReturnSuccess && capturesVideo(*node, card)) {
                node_ = kept_.keep(std::move(node), path);
                return kIOReturnSuccess;
            }
            // This says more than ENODEV about why there is no node.
            if (status != kIOReturnSuccess)
                failure = status;
        }
        return failure;
    }

    Attachment attachment_;
    std::string syspath_;
    Descriptor descriptor_;
    KeptNode& kept_;
    SilentCameras& silent_;
    std::weak_ptr<VideoNode> node_;
};

class LinuxUsbDevice : public UsbDevice {
  public:
    LinuxUsbDevice(udev_device* device, KeptNode& kept, SilentCameras& silent)
        : attachment_(attachmentOf(device)),
          vendorID_(usbID(device, "idVendor")),
          productID_(usbID(device, "idProduct")),
          locationID_(usbLocation(textOrEmpty(udev_device_get_sysname(device))).id),
          kept_(kept),
          silent_(silent) {}

    const Attachment& attachment() const { return attachment_; }

    IOReturn createPlugIn() override { return presence(attachment_); }
    IOReturn queryInterface() override { return presence(attachment_); }
    std::uint16_t vendorID() const override { return vendorID_; }
    std::uint16_t productID() const override { return productID_; }
    std::uint32_t locationID() const override { return locationID_; }

    IOReturn interfaces(std::vector<std::shared_ptr<UsbInterface>>& found) override {
        const UdevPtr context(udev_new());
        const auto device = udevDevice(context.get(), attachment_);
        if (!device)
            return ENODEV;
        for (const UdevDevicePtr& interface : usbInterfaces(context.get(), device.get()))
            found.push_back(
                std::make_shared<LinuxUsbInterface>(attachment_, interface.get(), kept_, silent_));
        return kIOReturnSuccess;
    }

  private:
    Attachment attachment_;
    std::uint16_t vendorID_;
    std::uint16_t productID_;
    std::uint32_t locationID_;
    KeptNode& kept_;
    SilentCameras& silent_;
};

}  // namespace

std::vector<std::shared_ptr<UsbDevice>> LinuxUsb::devices() {
    std::vector<std::shared_ptr<LinuxUsbDevice>> found;
    const UdevPtr context(udev_new());
    if (!context)
        return {};
    for (const UdevDevicePtr& device : udevDevices(context.get(), "usb", nullptr))
        if (isUsb(device.get(), "usb_device"))
            found.push_back(std::make_shared<LinuxUsbDevice>(device.get(), kept_, silent_));
    // Of several with the same ids the first is taken, which must be the one whose picture is.
    std::ranges::stable_sort(found, {}, [this](const auto& device) {
        return capture_.placeInList(device->attachment());
    });
    return {found.begin(), found.end()};
}

}  // namespace platform
