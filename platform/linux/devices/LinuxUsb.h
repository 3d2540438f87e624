#pragma once

#include "platform/backend/UsbBackend.h"
#include "platform/linux/devices/KeptNode.h"

namespace platform {

class LinuxCapture;

/// The USB devices of the machine, as udev knows them. Requests go through the kernel's UVC
/// driver, so that the camera stays with the programs that use it. A device that was unplugged is
/// gone for good: another one at its port is another device. Main thread only.
class LinuxUsb : public UsbBackend {
  public:
    /// Requests go through the node that `kept` keeps open. Cameras come in the order in which
    /// `capture` lists them, before all else. What is returned must not outlive either.
    LinuxUsb(KeptNode& kept, const LinuxCapture& capture) : kept_(kept), capture_(capture) {}

    std::vector<std::shared_ptr<UsbDevice>> devices() override;

  private:
    KeptNode& kept_;
    const LinuxCapture& capture_;
};

}  // namespace platform
