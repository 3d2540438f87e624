#pragma once

#include <memory>
#include <vector>

#include "platform/MainLoop.h"
#include "platform/backend/CaptureBackend.h"

namespace platform {

class NodeFeed;

/// The capture devices of the machine: cameras with a video4linux node, and microphones, which
/// are listed only. A device's file may be missing its permissions when it is listed; opening says
/// so. Main thread only.
class LinuxCapture : public CaptureBackend {
  public:
    LinuxCapture();

    /// Lists what `feed` tells of.
    explicit LinuxCapture(std::unique_ptr<NodeFeed> feed);
    LinuxCapture(const LinuxCapture&) = delete;
    LinuxCapture& operator=(const LinuxCapture&) = delete;
    ~LinuxCapture() override;

    std::vector<std::shared_ptr<CaptureDevice>> devices() override;
    void setListener(CaptureListener* listener) override;

  private:
    class Device;

    void takeEvents();
    void lookAgain();
    void add(std::shared_ptr<Device> device);
    void remove(const std::shared_ptr<Device>& device);
    std::shared_ptr<Device> find(const std::string& syspath) const;

    std::unique_ptr<NodeFeed> feed_;
    std::vector<std::shared_ptr<Device>> attached_;
    bool looked_ = false;
    CaptureListener* listener_ = nullptr;
    std::unique_ptr<DescriptorWatch> watch_;
};

}  // namespace platform
