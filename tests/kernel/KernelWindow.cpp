#include "tests/kernel/KernelWindow.h"

#include <gtest/gtest.h>

#include "camera/UVCCameraControl.h"
#include "devices/CameraList.h"
#include "devices/CaptureSession.h"
#include "platform/AVCaptureSession.h"
#include "platform/backend/Backends.h"

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
    const QComboBox& cameras = list("m_cbxDevice");
    names.reserve(static_cast<std::size_t>(cameras.count()));
    for (int i = 0; i < cameras.count(); ++i)
        names.push_back(cameras.itemText(i).toStdString());
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
