#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

#include "platform/backend/Backends.h"
#include "platform/linux/devices/KeptNode.h"
#include "platform/linux/devices/LinuxCapture.h"
#include "platform/linux/devices/LinuxUsb.h"
#include "tests/kernel/UsbipCamera.h"
#include "tests/support/WindowFixture.h"

/// The program's window on the real back ends over this machine's ports, into which a test plugs
/// virtual cameras. Comes and goes with no camera plugged in.
class KernelWindow : public LiveWindow {
  public:
    KernelWindow() {
        platform::installBackends({&usb_, &capture_, &log});
        start();
    }
    KernelWindow(const KernelWindow&) = delete;
    KernelWindow& operator=(const KernelWindow&) = delete;
    ~KernelWindow() override {
        // A camera that a test left in its port is on its way out; the next test wants the port.
        waitForCameras(0);
        stop();
        EXPECT_TRUE(waitForPreviews()) << "the next test wants the node's number as well";
        platform::installBackends({});
    }

    /// Plugs in and waits until the window lists it. Destroying what is returned pulls it out.
    std::unique_ptr<UsbipCamera> plug(virtualcam::CameraModel model, unsigned port,
                                      std::string format = "YUY2") {
        const int before = list("m_cbxDevice").count();
        auto plugged = std::make_unique<UsbipCamera>(std::move(model), port, std::move(format));
        EXPECT_TRUE(waitForCameras(before + 1));
        plugged->camera().clearRequests();
        return plugged;
    }
    /// Waits until the window lists so many.
    bool waitForCameras(int count) {
        return waitUntil([&] { return list("m_cbxDevice").count() == count; });
    }
    /// Waits until every preview that was stopped has let go of its camera.
    bool waitForPreviews() { return capture_.waitForPreviews(std::chrono::seconds(40)); }
    void clickOpen() { click("OnBtnOpenCamera:"); }

    /// Lets a camera that did not answer be asked again. No other time passes for it.
    void endRest() { now_ += platform::SilentCameras::rest; }

    TestLog log;

  private:
    platform::KeptNode node_;
    platform::LinuxCapture capture_{node_};
    std::chrono::steady_clock::time_point now_;
    platform::LinuxUsb usb_{node_, capture_, [this] { return now_; }};
};
