#pragma once

#include <utility>

#include "platform/backend/UsbBackend.h"
#include "platform/linux/devices/KeptNode.h"
#include "platform/linux/devices/SilentCameras.h"

namespace platform {

class LinuxCapture;

/// The USB devices of the machine, as udev knows them. Requests go through the kernel's UVC
/// driver, so that the camera stays with the programs that use it. A device that was unplugged is
/// gone for good: another one at its port is another device. A camera that let a request time out
/// is not asked again for some seconds: its requests fail at once. Main thread only.
class LinuxUsb : public UsbBackend {
  public:
    /// Requests go through the node that `kept` keeps open. Cameras come in the order in which
    /// `capture` lists them, before all else. `now` tells the time. What is returned must not
    /// outlive any of them.
    LinuxUsb(KeptNode& kept, const LinuxCapture& capture,
             SilentCameras::Clock now = std::chrono::steady_clock::now)
        : kept_(kept), capture_(capture), silent_(std::move(now)) {}

    std::vector<std::shared_ptr<UsbDevice>> devices() override;

  private:
    KeptNode& kept_;
    const LinuxCapture& capture_;
    SilentCameras silent_;
};

}  // namespace platform
