#include "tests/kernel/KernelWindow.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "platform/backend/Backends.h"

namespace {

/// Whether the driver makes the request of itself, at times of its own: it reads the limits of a
/// standard control before it first writes it, the values that a mode governs after it has written
/// the mode, and from unit 0 why a request was refused.
bool isDriversOwn(const virtualcam::RequestRecord& record) {
    const virtualcam::ControlId id{static_cast<std::uint8_t>(record.wIndex >> 8),
                                   static_cast<std::uint8_t>(record.wValue >> 8)};
    const auto& rows = virtualcam::studioControls();
    const auto row = std::ranges::find(rows, id, &virtualcam::ControlRow::id);
    if (id.unit == virtualcam::interfaceUnit || row == rows.end())
        return true;
    return id.unit != extensionUnitID && record.bRequest != SET_CUR &&
           (record.bRequest != GET_CUR || (row->info & virtualcam::infoAutoUpdate) != 0);
}

}  // namespace

KernelWindow::KernelWindow() {
    platform::installBackends({&usb_, &capture_, &log});
    start();
}

KernelWindow::~KernelWindow() {
    // A camera that a test left in its port is on its way out; the next test wants the port free.
    waitForCameras(0);
    stop();
    EXPECT_TRUE(waitForPreviews()) << "the next test wants the node's number as well";
    platform::installBackends({});
}

std::unique_ptr<UsbipCamera> KernelWindow::plug(virtualcam::CameraModel model, unsigned port,
                                                std::string format) {
    const int before = list("m_cbxDevice").count();
    auto plugged = std::make_unique<UsbipCamera>(std::move(model), port, std::move(format));
    EXPECT_TRUE(waitForCameras(before + 1));
    plugged->camera().clearRequests();
    return plugged;
}

void KernelWindow::perform(const Exchange& exchange, virtualcam::VirtualCamera& camera) {
    ::perform(exchange, {*this, camera, log, [this] { clickOpen(); }, isDriversOwn});
}
