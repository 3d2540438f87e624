#include "tests/kernel/KernelBench.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>
#include <algorithm>
#include <stdexcept>

using namespace virtualcam;  // NOLINT(google-build-using-namespace): names of controls throughout

bool waitUntil(const std::function<bool()>& done) {
    // Longer than anything takes, even while the emulated machine shares its processors.
    constexpr std::chrono::seconds generous{40};
    const QDeadlineTimer deadline(generous);
    QTimer waker;  // ends the last wait
    waker.setSingleShot(true);
    waker.start(generous);
    while (!done() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return done();
}

KernelBench::~KernelBench() {
    // A camera that a test left in its port is on its way out; the next test wants the port free.
    waitUntil([this] { return announced_.empty(); });
    capture.setListener(nullptr);
}

PluggedCamera KernelBench::plug(const CameraModel& model, unsigned port) {
    CameraModel honest = model;
    // UVC counts the contrast without a sign (UVC 1.1, 4.2.2.3.3), and so does the kernel's driver;
    // the built-in camera takes the window's whole range.
    for (ControlRow& row : honest.controls)
        if (row.id == ControlId{kProcessingUnit, PU_CONTRAST_CONTROL})
            row.limits.minimum = 0;
    PluggedCamera plugged;
    plugged.port =
        std::make_unique<usbip::UsbipCamera>(std::make_shared<VirtualCamera>(honest), port);
    if (!waitUntil([this] { return arrived_ != nullptr; }))
        throw std::runtime_error("no camera was announced");
    plugged.device = std::exchange(arrived_, nullptr);
    plugged.camera().clearRequests();
    return plugged;
}

void KernelBench::unplug(PluggedCamera& camera) {
    camera.port.reset();
    if (!waitUntil([&] { return std::ranges::count(announced_, camera.device) == 0; }))
        throw std::runtime_error("the camera's departure was not announced");
}

std::shared_ptr<platform::UsbDevice> KernelBench::usbDevice(unsigned port) {
    for (const auto& device : usb_.devices())
        if (device->locationID() == (0x01000000U | (port + 1) << 20))
            return device;
    return nullptr;
}

std::shared_ptr<platform::UsbInterface> KernelBench::openInterface(unsigned port) {
    const auto device = usbDevice(port);
    std::vector<std::shared_ptr<platform::UsbInterface>> interfaces;
    if (!device || device->interfaces(interfaces) != 0 || interfaces.empty() ||
        interfaces.front()->open() != 0)
        throw std::runtime_error("no video-control interface that can be opened");
    return interfaces.front();
}

void KernelBench::arrived(std::shared_ptr<platform::CaptureDevice> device) {
    announced_.push_back(device);
    arrived_ = std::move(device);
}

void KernelBench::left(std::shared_ptr<platform::CaptureDevice> device) {
    std::erase(announced_, device);
}

IOUSBDevRequest requestFor(Request code, ControlId id, std::vector<std::uint8_t>& data) {
    const std::uint8_t type = code == SET_CUR ? 0x21 : 0xA1;
    return {type,
            code,
            static_cast<std::uint16_t>(id.selector << 8),
            static_cast<std::uint16_t>(id.unit << 8),
            static_cast<std::uint16_t>(data.size()),
            data.data(),
            0};
}

IOReturn transfer(platform::UsbInterface& interface, Request code, ControlId id,
                  std::vector<std::uint8_t>& data) {
    IOUSBDevRequest request = requestFor(code, id, data);
    const IOReturn status = interface.controlRequest(request);
    data.resize(request.wLenDone);
    return status;
}
