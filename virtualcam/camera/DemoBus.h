#pragma once

#include <memory>

#include "virtualcam/camera/VirtualBus.h"

namespace virtualcam {

/// The firmware text, ids and controls of the two cameras of the demonstration.
CameraModel studioCamera();   ///< with everything
CameraModel classicCamera();  ///< older: no zoom, focus, pan or tilt

/// The bus of the demonstration: both cameras are plugged in, with a microphone between them.
class DemoBus : public VirtualBus {
  public:
    DemoBus();

    const std::shared_ptr<VirtualCamera>& studio() const { return studio_; }
    const std::shared_ptr<VirtualCamera>& classic() const { return classic_; }

  private:
    std::shared_ptr<VirtualCamera> studio_;
    std::shared_ptr<VirtualCamera> classic_;
};

}  // namespace virtualcam
