#include "tests/kernel/KernelWindow.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "camera/UVCCameraControl.h"
#include "devices/CameraList.h"
#include "devices/CaptureSession.h"
#include "platform/AVCaptureSession.h"
#include "platform/backend/Backends.h"

namespace {

using namespace virtualcam;  // NOLINT(google-build-using-namespace): names of requests throughout

/// Whether the driver makes the request of itself, at times of its own: it reads the limits of a
/// standard control before it first writes it, the values that a mode governs after it has written
/// the mode, and from unit 0 why a request was refused.
bool isDriversOwn(const RequestRecord& record) {
    const auto unit = static_cast<std::uint8_t>(record.wIndex >> 8);
    const auto& rows = studioControls();
    const auto row = std::ranges::find(
        rows, ControlId{unit, static_cast<std::uint8_t>(record.wValue >> 8)}, &ControlRow::id);
    if (unit == kInterfaceUnit || row == rows.end())
        return true;
    const bool movesByItself = (row->info & kInfoAutoUpdate) != 0;
    return unit != kVendorUnit && record.bRequest != SET_CUR &&
           (record.bRequest != GET_CUR || movesByItself);
}

}  // namespace

KernelWindow::KernelWindow() {
    platform::installBackends({&usb_, &capture_, &log});
    platform::startDeviceNotifications();
    window_ = platform::InterfaceWindow::load(controller_);
    controller_.viewDidLoad();
    window_->widget().show();
}

KernelWindow::~KernelWindow() {
    g_captureSession.reset();
    g_uvcCamera.reset();
    window_.reset();
    platform::stopDeviceNotifications();
    platform::installBackends({});
}

std::vector<std::string> KernelWindow::listed() {
    std::vector<std::string> names;
    for (int i = 0; i < list("m_cbxDevice").count(); ++i)
        names.push_back(list("m_cbxDevice").itemText(i).toStdString());
    return names;
}

bool KernelWindow::waitForList(const std::vector<std::string>& names) {
    return waitUntil([&] { return listed() == names; });
}

PluggedCamera KernelWindow::plug(const virtualcam::CameraModel& model, unsigned port) {
    std::vector<std::string> names = listed();
    names.push_back(model.name);
    PluggedCamera plugged = bench.plug(model, port);
    EXPECT_TRUE(waitForList(names));
    return plugged;
}

bool KernelWindow::waitForPicture() {
    return waitUntil([] { return g_captureSession->latestFrame() != nullptr; });
}

void KernelWindow::perform(const Exchange& exchange, VirtualCamera& camera) {
    ::perform(exchange, {*this, camera, log, [this] { clickOpen(); }, isDriversOwn});
}
