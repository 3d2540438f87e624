#pragma once

#include <functional>
#include <memory>
#include <string>

#include "app/ViewController.h"
#include "platform/qt/Interface.h"
#include "tests/support/CameraBench.h"
#include "tests/support/WindowHands.h"

/// The real window with its controller, on a bench with a sane camera, as it is after start-up.
class WindowBench : public CameraBench, public WindowHands {
  public:
    explicit WindowBench(virtualcam::CameraModel model = virtualcam::studioCamera(),
                         bool start = true);
    WindowBench(const WindowBench&) = delete;
    WindowBench& operator=(const WindowBench&) = delete;
    ~WindowBench() override;

    /// Does what the application loop does at start-up, and forgets nothing of the log.
    void start();

    ViewController& controller() { return *controller_; }
    QWidget& window() override { return window_->widget(); }

    /// Presses the open button, and forgets the log and the requests.
    void pressOpen();

    /// Handles events until `condition` holds; false when it does not within some seconds.
    static bool waitUntil(const std::function<bool()>& condition);
    /// Waits until the preview has a picture.
    static void awaitPicture();

  private:
    std::unique_ptr<ViewController> controller_;
    std::unique_ptr<platform::InterfaceWindow> window_;
};
