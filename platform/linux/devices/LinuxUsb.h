#pragma once

#include "platform/backend/UsbBackend.h"
#include "platform/linux/devices/KeptNode.h"

namespace platform {

/// The USB devices of the machine, as udev knows them. Requests go through the kernel's UVC
/// driver, so that the camera stays with the programs that use it. A device that was unplugged is
/// gone for good: another one at its port is another device. Main thread only.
class LinuxUsb : public UsbBackend {
  public:
    /// Requests go through the node that `kept` keeps open.
    explicit LinuxUsb(KeptNode& kept) : kept_(kept) {}

    std::vector<std::shared_ptr<UsbDevice>> devices() override;

  private:
    KeptNode& kept_;
};

}  // namespace platform
