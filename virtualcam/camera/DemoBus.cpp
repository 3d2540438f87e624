#include "virtualcam/camera/DemoBus.h"

namespace virtualcam {

CameraModel studioCamera() {
    return {"Quelvo Studio Camera", 0xe7a1, 0x4c10, 0x14200000, "V9.2.4", studioControls()};
}

CameraModel classicCamera() {
    return {"Quelvo Classic Camera", 0xe7a1, 0x1c05, 0x14300000, "1.0.5", classicControls()};
}

DemoBus::DemoBus() {
    plug(std::make_shared<VirtualCamera>(studioCamera()));
    plugMicrophone("0x14400000e7a10a0d", "Quelvo Desk Microphone");
    plug(std::make_shared<VirtualCamera>(classicCamera()));
}

}  // namespace virtualcam
