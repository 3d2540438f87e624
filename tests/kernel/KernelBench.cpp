#include "tests/kernel/KernelBench.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>
#include <algorithm>
#include <stdexcept>

namespace {

using platform::CaptureDevice;

// Longer than anything takes, even while the emulated machine shares its processors.
constexpr std::chrono::seconds kGenerous{40};

std::string identifierEnd(const virtualcam::CameraModel& model, unsigned port) {
    std::array<char, 24> text{};
    std::snprintf(text.data(), text.size(), "0x%08x%04x%04x", KernelBench::location(port),
                  model.vendorID, model.productID);
    return text.data();
}

/// UVC counts the contrast without a sign (UVC 1.1, 4.2.2.3.3), and so does the kernel's driver;
/// the built-in camera takes the window's whole range.
virtualcam::CameraModel honest(virtualcam::CameraModel model) {
    for (virtualcam::ControlRow& row : model.controls)
        if (row.id ==
            virtualcam::ControlId{virtualcam::kProcessingUnit, virtualcam::PU_CONTRAST_CONTROL})
            row.limits.minimum = 0;
    return model;
}

}  // namespace

bool waitUntil(const std::function<bool()>& done) {
    const QDeadlineTimer deadline(kGenerous);
    QTimer waker;  // ends the last wait
    waker.setSingleShot(true);
    waker.start(kGenerous);
    while (!done() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return done();
}

void SharedLog::line(std::string_view text) {
    const std::lock_guard lock(mutex_);
    lines_.emplace_back(text);
}

int SharedLog::count(std::string_view prefix) const {
    const std::lock_guard lock(mutex_);
    return static_cast<int>(std::count_if(
        lines_.begin(), lines_.end(), [&](const auto& text) { return text.starts_with(prefix); }));
}

KernelBench::KernelBench() {
    attached_ = capture_.devices();
    capture_.setListener(this);
}

KernelBench::~KernelBench() {
    // A camera that a test left in its port is on its way out; the next test wants the port free.
    waitUntil([this] {
        return std::none_of(attached_.begin(), attached_.end(),
                            [](const auto& device) { return device->hasVideo(); });
    });
    capture_.setListener(nullptr);
}

PluggedCamera KernelBench::plug(const virtualcam::CameraModel& model, unsigned port) {
    PluggedCamera plugged;
    plugged.port = std::make_unique<usbip::UsbipCamera>(
        std::make_shared<virtualcam::VirtualCamera>(honest(model)), port);
    const std::string identifier = identifierEnd(model, port);
    const auto find = [&] {
        const auto found =
            std::find_if(attached_.begin(), attached_.end(),
                         [&](const auto& device) { return device->uniqueID() == identifier; });
        plugged.device = found == attached_.end() ? nullptr : *found;
        return plugged.device != nullptr;
    };
    if (!waitUntil(find))
        throw std::runtime_error("no camera " + identifier + " was announced");
    plugged.camera().clearRequests();
    return plugged;
}

void KernelBench::unplug(PluggedCamera& camera) {
    camera.port.reset();
    if (!waitForDeparture(camera))
        throw std::runtime_error("the camera's departure was not announced");
}

bool KernelBench::waitForDeparture(const PluggedCamera& camera) {
    return waitUntil([&] {
        return std::find(attached_.begin(), attached_.end(), camera.device) == attached_.end();
    });
}

std::shared_ptr<platform::UsbDevice> KernelBench::usbDevice(unsigned port) {
    for (const auto& device : usb_.devices())
        if (device->locationID() == location(port))
            return device;
    return nullptr;
}

std::shared_ptr<platform::UsbInterface> KernelBench::openInterface(unsigned port) {
    const auto device = usbDevice(port);
    std::vector<std::shared_ptr<platform::UsbInterface>> interfaces;
    if (!device || device->interfaces(interfaces) != 0 || interfaces.empty())
        throw std::runtime_error("no video-control interface");
    if (interfaces.front()->open() != 0)
        throw std::runtime_error("the video-control interface can't be opened");
    return interfaces.front();
}

void KernelBench::arrived(std::shared_ptr<CaptureDevice> device) {
    attached_.push_back(std::move(device));
}

void KernelBench::left(std::shared_ptr<CaptureDevice> device) {
    std::erase(attached_, device);
}

namespace {

IOUSBDevRequest requestFor(virtualcam::Request code, virtualcam::ControlId id,
                           std::vector<std::uint8_t>& data) {
    const std::uint8_t type = code == virtualcam::SET_CUR ? 0x21 : 0xA1;
    return {type,
            code,
            static_cast<std::uint16_t>(id.selector << 8),
            static_cast<std::uint16_t>(id.unit << 8),
            static_cast<std::uint16_t>(data.size()),
            data.data(),
            0};
}

}  // namespace

IOReturn transfer(platform::UsbInterface& interface, virtualcam::Request code,
                  virtualcam::ControlId id, std::vector<std::uint8_t>& data) {
    IOUSBDevRequest request = requestFor(code, id, data);
    const IOReturn status = interface.controlRequest(request);
    data.resize(request.wLenDone);
    return status;
}

void setInside(virtualcam::VirtualCamera& camera, virtualcam::ControlId id,
               std::vector<std::uint8_t> value) {
    IOUSBDevRequest request = requestFor(virtualcam::SET_CUR, id, value);
    if (camera.controlRequest(request) != 0)
        throw std::runtime_error("the camera refuses the value");
    camera.clearRequests();
}
