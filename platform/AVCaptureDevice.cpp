#include "platform/AVCaptureDevice.h"

#include <utility>

#include "platform/NSNotificationCenter.h"
#include "platform/Utf8.h"
#include "platform/backend/Backends.h"
#include "platform/backend/CaptureBackend.h"

AVCaptureDevice::AVCaptureDevice(std::shared_ptr<platform::CaptureDevice> device)
    : device_(std::move(device)) {}

std::vector<AVCaptureDevice> AVCaptureDevice::devices() {
    std::vector<AVCaptureDevice> found;
    if (platform::CaptureBackend* capture = platform::backends().capture)
        for (auto& device : capture->devices())
            found.emplace_back(std::move(device));
    return found;
}

bool AVCaptureDevice::hasMediaType(AVMediaType /*video*/) const {
    return device_->hasVideo();
}

std::string AVCaptureDevice::uniqueID() const {
    return platform::validUtf8(device_->uniqueID());
}

std::string AVCaptureDevice::localizedName() const {
    return platform::printableUtf8(device_->localizedName());
}

namespace platform {
namespace {

/// Turns the back end's announcements into notifications, as long as it lives.
class DeviceAnnouncer : public CaptureListener {
  public:
    explicit DeviceAnnouncer(CaptureBackend& capture) : capture_(capture) {
        capture_.setListener(this);
    }
    DeviceAnnouncer(const DeviceAnnouncer&) = delete;
    DeviceAnnouncer& operator=(const DeviceAnnouncer&) = delete;
    ~DeviceAnnouncer() override { capture_.setListener(nullptr); }

    void arrived(std::shared_ptr<CaptureDevice> device) override {
        post(AVCaptureDeviceWasConnectedNotification, std::move(device));
    }

    void left(std::shared_ptr<CaptureDevice> device) override {
        post(AVCaptureDeviceWasDisconnectedNotification, std::move(device));
    }

  private:
    static void post(NSNotificationName name, std::shared_ptr<CaptureDevice> device) {
        NSNotificationCenter::defaultCenter().postNotification(
            {name, AVCaptureDevice(std::move(device))});
    }

    CaptureBackend& capture_;
};

}  // namespace

std::shared_ptr<const void> announceDevices() {
    static std::weak_ptr<const DeviceAnnouncer> current;
    auto announcer = current.lock();
    if (CaptureBackend* capture = backends().capture; capture != nullptr && !announcer)
        current = announcer = std::make_shared<const DeviceAnnouncer>(*capture);
    return announcer;
}

}  // namespace platform
