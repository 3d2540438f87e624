#pragma once

#include "virtualcam/camera/VirtualBus.h"

namespace virtualcam {

/// The cameras of the demonstration.
CameraModel studioCamera();   ///< lacks nothing
CameraModel classicCamera();  ///< older: no zoom, focus, pan or tilt

/// The bus of the demonstration: both cameras are plugged in, with a microphone between them.
class DemoBus : public VirtualBus {
  public:
    DemoBus();
};

}  // namespace virtualcam
