#pragma once

#include <memory>
#include <string>
#include <vector>

#include "app/ViewController.h"
#include "platform/qt/Interface.h"
#include "tests/kernel/KernelBench.h"
#include "tests/support/Exchanges.h"

/// How the log line of a preview that can't start or go on begins.
inline constexpr const char* kOpenError = "ERROR: trying to open camera: ";

/// The program's window on the real back ends.
class KernelWindow : public WindowHands {
  public:
    KernelWindow();
    KernelWindow(const KernelWindow&) = delete;
    KernelWindow& operator=(const KernelWindow&) = delete;
    ~KernelWindow() override;

    QWidget& window() override { return window_->widget(); }

    std::vector<std::string> listed();
    bool waitForList(const std::vector<std::string>& names);

    /// Plugs in and waits until the window lists it as well.
    PluggedCamera plug(const virtualcam::CameraModel& model, unsigned port);

    void clickOpen() { click("OnBtnOpenCamera:"); }
    static bool waitForPicture();

    /// Performs an exchange on this window and the camera that it shows.
    void perform(const Exchange& exchange, virtualcam::VirtualCamera& camera);

    TestLog log;
    KernelBench bench;

  private:
    platform::LinuxUsb usb_;
    platform::LinuxCapture capture_;
    ViewController controller_;
    std::unique_ptr<platform::InterfaceWindow> window_;
};
