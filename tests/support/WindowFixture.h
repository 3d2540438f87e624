#pragma once

#include <QCoreApplication>
#include <memory>

#include "app/ViewController.h"
#include "camera/UVCCameraControl.h"
#include "devices/CameraList.h"
#include "devices/CaptureSession.h"
#include "platform/AVCaptureSession.h"
#include "platform/qt/Interface.h"
#include "tests/support/CameraFixture.h"
#include "tests/support/WindowHands.h"

/// The real window with its controller, on the back ends that are installed when it starts.
class LiveWindow : public WindowHands {
  public:
    LiveWindow() = default;
    LiveWindow(const LiveWindow&) = delete;
    LiveWindow& operator=(const LiveWindow&) = delete;
    ~LiveWindow() override { stop(); }

    /// Does what the application loop does at start-up, and forgets nothing of the log.
    void start() {
        controller_->viewDidLoad();
        window().show();
    }
    /// Lets go of the window and of the back ends.
    void stop() {
        window_.reset();
        controller_.reset();
        g_captureSession.reset();
        g_uvcCamera.reset();
        g_deviceList.clear();
    }

    ViewController& controller() { return *controller_; }
    QWidget& window() override { return window_->widget(); }

    /// Waits until the preview has a picture.
    static void awaitPicture() {
        if (!waitUntil([] { return g_captureSession->latestFrame() != nullptr; }))
            throw std::runtime_error("no picture comes");
    }

  private:
    std::unique_ptr<ViewController> controller_ = std::make_unique<ViewController>();
    std::unique_ptr<platform::InterfaceWindow> window_ =
        platform::InterfaceWindow::load(*controller_);
};

/// The window with a sane camera behind it, as it is after start-up.
class WindowFixture : public CameraFixture, public LiveWindow {
  public:
    explicit WindowFixture(virtualcam::CameraModel model = virtualcam::studioCamera(),
                           bool startNow = true)
        : CameraFixture(std::move(model)) {
        if (startNow)
            start();
    }

    /// Presses the open button, and forgets the log and the requests.
    void pressOpen() {
        click("OnBtnOpenCamera:");
        log().take();
        requests();
    }

    /// What was sent to the camera once all that is queued has been handled.
    std::vector<std::string> sent() {
        QCoreApplication::processEvents();
        return requests();
    }
};
