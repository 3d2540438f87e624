#include "tests/support/WindowFixture.h"

#include "camera/UVCCameraControl.h"
#include "devices/CameraList.h"
#include "devices/CaptureSession.h"
#include "platform/AVCaptureSession.h"

void LiveWindow::start() {
    controller_->viewDidLoad();
    window().show();
}

void LiveWindow::stop() {
    window_.reset();
    controller_.reset();
    g_captureSession.reset();
    g_uvcCamera.reset();
    g_deviceList.clear();
}

void LiveWindow::awaitPicture() {
    if (!waitUntil([] { return g_captureSession->latestFrame() != nullptr; }))
        throw std::runtime_error("no picture comes");
}

void WindowFixture::pressOpen() {
    buttonSending("OnBtnOpenCamera:").click();
    log().take();
    requests();
}
