#pragma once

#include <memory>

#include "tests/kernel/UsbipServer.h"
#include "tests/kernel/UvcFunction.h"
#include "virtualcam/VirtualCamera.h"

namespace usbip {

/// A virtual camera in a USB port of this machine, where the kernel's own driver takes it for a
/// camera like any other. Destroying it pulls it out.
class UsbipCamera {
  public:
    /// Plugs the camera into high-speed port `port` of the first virtual host controller. Throws
    /// std::system_error when the port is taken or the controller is missing.
    UsbipCamera(std::shared_ptr<virtualcam::VirtualCamera> camera, unsigned port);
    UsbipCamera(const UsbipCamera&) = delete;
    UsbipCamera& operator=(const UsbipCamera&) = delete;
    ~UsbipCamera() = default;

    virtualcam::VirtualCamera& camera() const { return *camera_; }

  private:
    const std::shared_ptr<virtualcam::VirtualCamera> camera_;
    UvcFunction function_;
    std::unique_ptr<UsbipServer> server_;
};

}  // namespace usbip
