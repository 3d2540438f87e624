#pragma once

#include <chrono>
#include <memory>

#include "platform/linux/devices/KeptNode.h"
#include "platform/linux/devices/LinuxCapture.h"
#include "platform/linux/devices/LinuxUsb.h"
#include "tests/kernel/UsbipCamera.h"
#include "tests/support/Exchanges.h"
#include "tests/support/WindowFixture.h"

/// The program's window on the real back ends over this machine's ports, into which a test plugs
/// virtual cameras. Comes and goes with no camera plugged in.
class KernelWindow : public LiveWindow {
  public:
    KernelWindow();
    KernelWindow(const KernelWindow&) = delete;
    KernelWindow& operator=(const KernelWindow&) = delete;
    ~KernelWindow() override;

    /// Plugs in and waits until the window lists it. Destroying what is returned pulls it out.
    std::unique_ptr<UsbipCamera> plug(virtualcam::CameraModel model, unsigned port,
                                      std::string format = "YUY2");
    /// Waits until the window lists so many.
    bool waitForCameras(int count) {
        return waitUntil([&] { return list("m_cbxDevice").count() == count; });
    }
    /// Waits until every preview that was stopped has let go of its camera.
    bool waitForPreviews() { return capture_.waitForPreviews(std::chrono::seconds(40)); }
    void clickOpen() { click("OnBtnOpenCamera:"); }

    /// Performs an exchange on this window and the camera that it shows.
    void perform(const Exchange& exchange, virtualcam::VirtualCamera& camera);

    /// Lets a camera that did not answer be asked again. No other time passes for it.
    void endRest() { now_ += platform::SilentCameras::rest; }

    TestLog log;

  private:
    platform::KeptNode node_;
    platform::LinuxCapture capture_{node_};
    std::chrono::steady_clock::time_point now_;
    platform::LinuxUsb usb_{node_, capture_, [this] { return now_; }};
};
