#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/support/TestLog.h"
#include "virtualcam/camera/DemoBus.h"

/// Returns a request as its setup bytes and data: "21 01 0200 0300 2 | 64 00", and " !" behind a
/// refused one.
std::string wireText(const virtualcam::RequestRecord& record);

/// Sets a control of a camera past the application, as the camera itself would. Throws when the
/// camera refuses the value.
void setInCamera(virtualcam::VirtualCamera& camera, virtualcam::ControlId control,
                 std::vector<std::uint8_t> value);

/// A sane camera on a bus of its own, with the log recorded: what a test starts from before it
/// breaks one thing. Puts the process-wide state back at its end.
class CameraFixture {
  public:
    /// Starts with `camera` plugged in.
    explicit CameraFixture(virtualcam::CameraModel model = virtualcam::studioCamera());
    CameraFixture(const CameraFixture&) = delete;
    CameraFixture& operator=(const CameraFixture&) = delete;
    ~CameraFixture();

    virtualcam::VirtualBus& bus() { return bus_; }
    virtualcam::VirtualCamera& camera() { return *camera_; }
    const std::shared_ptr<virtualcam::VirtualCamera>& cameraReference() const { return camera_; }
    TestLog& log() { return log_; }

    /// Plugs in one more camera like the first, at another port.
    std::shared_ptr<virtualcam::VirtualCamera> plugAnother(const std::string& name);

    /// Opens the camera's control channel and forgets the log and the requests until now.
    void open();

    /// Returns the requests that reached the camera since the last call.
    std::vector<std::string> requests();

  private:
    TestLog log_;
    virtualcam::VirtualBus bus_;
    std::shared_ptr<virtualcam::VirtualCamera> camera_;
};
