#include "tests/support/WindowBench.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include "devices/CameraList.h"
#include "devices/CaptureSession.h"
#include "platform/AVCaptureDevice.h"
#include "platform/AVCaptureSession.h"

WindowBench::WindowBench(virtualcam::CameraModel model, bool startNow)
    : CameraBench(std::move(model)),
      controller_(std::make_unique<ViewController>()),
      window_(platform::InterfaceWindow::load(*controller_)) {
    if (!window_)
        throw std::runtime_error("the interface file does not load");
    if (startNow)
        start();
}

WindowBench::~WindowBench() {
    platform::stopDeviceNotifications();
    window_.reset();
    controller_.reset();
    g_captureSession.reset();
    g_deviceList.clear();
}

void WindowBench::start() {
    platform::startDeviceNotifications();
    controller_->viewDidLoad();
    window().show();
}

void WindowBench::pressOpen() {
    buttonSending("OnBtnOpenCamera:").click();
    log().take();
    requests();
}

bool WindowBench::waitUntil(const std::function<bool()>& condition) {
    bool late = false;
    QTimer deadline;
    deadline.setSingleShot(true);
    QObject::connect(&deadline, &QTimer::timeout, [&late] { late = true; });
    deadline.start(10'000);
    while (!condition() && !late)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return condition();
}

void WindowBench::awaitPicture() {
    if (!waitUntil([] { return g_captureSession->latestFrame() != nullptr; }))
        throw std::runtime_error("no picture comes");
}
