#include "virtualcam/camera/UsbNodes.h"

#include <atomic>
#include <cerrno>
#include <utility>

namespace virtualcam {
namespace {

using platform::UsbDevice;
using platform::UsbInterface;

// The interfaces by their class and subclass; for audio see USB Audio 1.0, tables.
constexpr UsbInterface::Descriptor videoControl{CC_VIDEO, SC_VIDEOCONTROL, 0, 0};
constexpr UsbInterface::Descriptor videoStreaming{CC_VIDEO, SC_VIDEOSTREAMING, 0, 0};
constexpr UsbInterface::Descriptor audioControl{1, 1, 0, 0};
constexpr UsbInterface::Descriptor audioStreaming{1, 2, 0, 0};

/// What a step returns: the device is gone, or the fault that is set for the step, or success.
IOReturn step(const Plug& plug, IOReturn Faults::*fault) {
    return plug.video->isAttached() ? plug.camera->faults().*fault : ENODEV;
}

class CameraInterface : public UsbInterface {
  public:
    CameraInterface(Plug plug, Descriptor descriptor, std::shared_ptr<std::atomic<bool>> opened)
        : plug_(std::move(plug)), descriptor_(descriptor), deviceOpened_(std::move(opened)) {}
    CameraInterface(const CameraInterface&) = delete;
    CameraInterface& operator=(const CameraInterface&) = delete;
    ~CameraInterface() override { shut(); }

    IOReturn createPlugIn() override { return step(plug_, &Faults::interfaceCreatePlugIn); }
    IOReturn queryInterface() override { return step(plug_, &Faults::interfaceQueryInterface); }
    Descriptor descriptor() const override { return descriptor_; }

    /// Only one handle at a time may have the interface open.
    IOReturn open() override {
        const IOReturn status = step(plug_, &Faults::interfaceOpen);
        if (status != kIOReturnSuccess)
            return status;
        if (opened_ || deviceOpened_->exchange(true))
            return EBUSY;
        opened_ = true;
        return kIOReturnSuccess;
    }

    IOReturn controlRequest(IOUSBDevRequest& request) override {
        request.wLenDone = 0;
        if (!plug_.video->isAttached())
            return ENODEV;
        return opened_ ? plug_.camera->controlRequest(request) : EBADF;
    }

    IOReturn close() override {
        shut();
        return plug_.video->isAttached() ? kIOReturnSuccess : ENODEV;
    }

  private:
    void shut() {
        if (std::exchange(opened_, false))
            *deviceOpened_ = false;
    }

    Plug plug_;
    Descriptor descriptor_;
    std::shared_ptr<std::atomic<bool>> deviceOpened_;  // whether any handle has it open
    bool opened_ = false;                              // whether this one has
};

class CameraUsbDevice : public UsbDevice {
  public:
    explicit CameraUsbDevice(Plug plug) : plug_(std::move(plug)) {}

    IOReturn createPlugIn() override { return step(plug_, &Faults::deviceCreatePlugIn); }
    IOReturn queryInterface() override { return step(plug_, &Faults::deviceQueryInterface); }
    std::uint16_t vendorID() const override { return plug_.camera->model().vendorID; }
    std::uint16_t productID() const override { return plug_.camera->model().productID; }
    std::uint32_t locationID() const override { return plug_.camera->model().locationID; }

    IOReturn interfaces(std::vector<std::shared_ptr<UsbInterface>>& found) override {
        const IOReturn status = step(plug_, &Faults::deviceInterfaces);
        if (status != kIOReturnSuccess)
            return status;
        const auto add = [&](const UsbInterface::Descriptor& descriptor,
                             const std::shared_ptr<std::atomic<bool>>& opened) {
            found.push_back(std::make_shared<CameraInterface>(plug_, descriptor, opened));
        };
        if (!plug_.camera->faults().noVideoControl)
            add(videoControl, controlOpened_);
        add(videoStreaming, videoOpened_);
        if (plug_.camera->hasAudio()) {
            add(audioControl, std::make_shared<std::atomic<bool>>(false));
            add(audioStreaming, std::make_shared<std::atomic<bool>>(false));
        }
        return kIOReturnSuccess;
    }

  private:
    Plug plug_;
    std::shared_ptr<std::atomic<bool>> controlOpened_ = std::make_shared<std::atomic<bool>>(false);
    std::shared_ptr<std::atomic<bool>> videoOpened_ = std::make_shared<std::atomic<bool>>(false);
};

}  // namespace

std::shared_ptr<UsbDevice> makeUsbDevice(const Plug& plug) {
    return std::make_shared<CameraUsbDevice>(plug);
}

}  // namespace virtualcam
