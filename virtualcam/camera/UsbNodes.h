#pragma once

#include <memory>

#include "platform/backend/UsbBackend.h"
#include "virtualcam/camera/VideoPort.h"
#include "virtualcam/camera/VirtualCamera.h"

namespace virtualcam {

/// One time of being plugged in. What was opened during it stays dead after it, even when the same
/// camera is plugged in again.
struct Plug {
    std::shared_ptr<VirtualCamera> camera;
    std::shared_ptr<VideoPort> video = std::make_shared<VideoPort>();
};

/// Returns the USB device of a plugged-in camera.
std::shared_ptr<platform::UsbDevice> makeUsbDevice(const Plug& plug);

}  // namespace virtualcam
