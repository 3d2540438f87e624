#include "virtualcam/camera/VirtualBus.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "virtualcam/camera/FrameSource.h"
#include "virtualcam/camera/UsbNodes.h"

namespace virtualcam {
namespace {

using platform::CaptureDevice;

class CameraCaptureDevice : public CaptureDevice {
  public:
    explicit CameraCaptureDevice(Plug plug) : plug_(std::move(plug)) {}

    std::string uniqueID() const override { return uniqueIDOf(plug_.camera->model()); }
    std::string localizedName() const override { return plug_.camera->model().name; }
    bool hasVideo() const override { return true; }

    std::unique_ptr<platform::VideoSource> open(std::string& error) override {
        error = plug_.camera->faults().videoOpen;
        if (!plug_.video->isAttached())
            error = "The camera has been unplugged.";
        if (!error.empty())
            return nullptr;
        return std::make_unique<FrameSource>(plug_.camera, plug_.video);
    }

  private:
    Plug plug_;
};

class Microphone : public CaptureDevice {
  public:
    Microphone(std::string uniqueID, std::string name)
        : uniqueID_(std::move(uniqueID)), name_(std::move(name)) {}

    std::string uniqueID() const override { return uniqueID_; }
    std::string localizedName() const override { return name_; }
    bool hasVideo() const override { return false; }

    std::unique_ptr<platform::VideoSource> open(std::string& error) override {
        error = "The device delivers no video.";
        return nullptr;
    }

  private:
    std::string uniqueID_;
    std::string name_;
};

}  // namespace

/// What was plugged in together: a camera with its devices, or a microphone.
struct VirtualBus::Attachment {
    Plug plug;                                 // without a camera for a microphone alone
    std::shared_ptr<platform::UsbDevice> usb;  // null for a microphone alone
    std::vector<std::shared_ptr<CaptureDevice>> capture;

    bool isAttached() const { return plug.video->isAttached(); }
};

class VirtualBus::UsbSide : public platform::UsbBackend {
  public:
    explicit UsbSide(const VirtualBus& bus) : bus_(bus) {}

    std::vector<std::shared_ptr<platform::UsbDevice>> devices() override {
        std::vector<std::shared_ptr<platform::UsbDevice>> found;
        for (const auto& attachment : bus_.attachments_)
            if (attachment->usb && attachment->isAttached())
                found.push_back(attachment->usb);
        return found;
    }

  private:
    const VirtualBus& bus_;
};

class VirtualBus::CaptureSide : public platform::CaptureBackend {
  public:
    explicit CaptureSide(const VirtualBus& bus) : bus_(bus) {}

    std::vector<std::shared_ptr<CaptureDevice>> devices() override {
        std::vector<std::shared_ptr<CaptureDevice>> found;
        for (const auto& attachment : bus_.attachments_)
            if (attachment->isAttached())
                std::ranges::copy(attachment->capture, std::back_inserter(found));
        return found;
    }

    void setListener(platform::CaptureListener* listener) override { listener_ = listener; }
    platform::CaptureListener* listener() const { return listener_; }

  private:
    const VirtualBus& bus_;
    platform::CaptureListener* listener_ = nullptr;  // not owned
};

VirtualBus::VirtualBus()
    : usb_(std::make_unique<UsbSide>(*this)), capture_(std::make_unique<CaptureSide>(*this)) {}

VirtualBus::~VirtualBus() {
    for (const auto& attachment : attachments_)
        detach(*attachment);
}

platform::UsbBackend& VirtualBus::usb() {
    return *usb_;
}

platform::CaptureBackend& VirtualBus::capture() {
    return *capture_;
}

void VirtualBus::plug(const std::shared_ptr<VirtualCamera>& camera) {
    announceVanished();
    if (find(camera))
        return;
    const auto attachment = std::make_shared<Attachment>();
    attachment->plug.camera = camera;
    camera->setVanished([video = attachment->plug.video] { video->detach(); });
    camera->powerOn();
    attachment->usb = makeUsbDevice(attachment->plug);
    attachments_.push_back(attachment);
    add(*attachment, std::make_shared<CameraCaptureDevice>(attachment->plug));
    if (camera->hasAudio()) {
        const CameraModel& model = camera->model();
        add(*attachment, std::make_shared<Microphone>(uniqueIDOf(model) + ":audio", model.name));
    }
}

void VirtualBus::plugMicrophone(const std::string& uniqueID, const std::string& name) {
    attachments_.push_back(std::make_shared<Attachment>());
    add(*attachments_.back(), std::make_shared<Microphone>(uniqueID, name));
}

void VirtualBus::unplug(const std::shared_ptr<VirtualCamera>& camera) {
    announceVanished();
    remove(find(camera));
}

void VirtualBus::restart(const std::shared_ptr<VirtualCamera>& camera) {
    unplug(camera);
    plug(camera);
}

void VirtualBus::announceVanished() {
    while (true) {
        const auto gone = std::ranges::find_if_not(attachments_, &Attachment::isAttached);
        if (gone == attachments_.end())
            return;
        remove(std::shared_ptr<Attachment>(*gone));
    }
}

std::shared_ptr<VirtualBus::Attachment> VirtualBus::find(
    const std::shared_ptr<VirtualCamera>& camera) const {
    const auto found = std::ranges::find_if(
        attachments_, [&](const auto& attachment) { return attachment->plug.camera == camera; });
    return found == attachments_.end() ? nullptr : *found;
}

/// A device is in the list, or still to be announced: it enters the list just before that.
void VirtualBus::add(Attachment& attachment, std::shared_ptr<CaptureDevice> device) {
    attachment.capture.push_back(std::move(device));
    if (capture_->listener() != nullptr)
        capture_->listener()->arrived(attachment.capture.back());
}

void VirtualBus::remove(const std::shared_ptr<Attachment>& attachment) {
    if (!attachment)
        return;
    detach(*attachment);
    std::erase(attachments_, attachment);
    for (const auto& device : attachment->capture)
        if (capture_->listener() != nullptr)
            capture_->listener()->left(device);
}

/// From here on no handle reaches the camera, and a running picture has failed.
void VirtualBus::detach(const Attachment& attachment) {
    attachment.plug.video->detach();
    if (attachment.plug.camera)
        attachment.plug.camera->setVanished(nullptr);
}

std::string uniqueIDOf(const CameraModel& model) {
    std::array<char, 24> text{};
    std::snprintf(text.data(), text.size(), "0x%08x%04x%04x", model.locationID,
                  unsigned{model.vendorID}, unsigned{model.productID});
    return text.data();
}

}  // namespace virtualcam
