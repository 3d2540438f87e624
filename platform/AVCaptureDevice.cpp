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

bool AVCaptureDevice::hasMediaType(AVMediaType type) const {
    return device_->hasVideo() == (type == AVMediaType::video);
}

std::string AVCaptureDevice::uniqueID() const {
    return platform::validUtf8(device_->uniqueID());
}

std::string AVCaptureDevice::localizedName() const {
    return platform::printableUtf8(device_->localizedName());
}

namespace platform {
namespace {

/// Turns the back end's announcements into notifications.
class DeviceNotifier : public CaptureListener {
  public:
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
};

void setNotifier(CaptureListener* notifier) {
    if (CaptureBackend* capture = backends().capture)
        capture->setListener(notifier);
}

}  // namespace

void startDeviceNotifications() {
    static DeviceNotifier notifier;
    setNotifier(&notifier);
}

void stopDeviceNotifications() {
    setNotifier(nullptr);
}

}  // namespace platform
