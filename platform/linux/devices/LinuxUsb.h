#pragma once

#include "platform/backend/UsbBackend.h"

namespace platform {

/// The USB devices of the machine, as udev knows them. Requests go through the kernel's UVC
/// driver, so that the camera stays with the programs that use it. A device that was unplugged is
/// gone for good: another one at its port is another device. Main thread only.
class LinuxUsb : public UsbBackend {
  public:
    /// Closes what is kept open of the video node at `path`, whose camera has left: until then the
    /// kernel keeps the node's number, and the next camera gets another. Main thread.
    static void nodeLeft(const std::string& path);

    std::vector<std::shared_ptr<UsbDevice>> devices() override;
};

}  // namespace platform
