#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "platform/MainLoop.h"
#include "platform/backend/CaptureBackend.h"

namespace platform {

class ClosingPreviews;
class KeptNode;
class UdevFeed;
struct Attachment;
struct NodeFacts;

/// The capture devices of the machine: cameras with a video4linux node, and microphones, which
/// are listed only. A device's file may be missing its permissions when it is listed; opening says
/// so. Main thread only.
class LinuxCapture : public CaptureBackend {
  public:
    /// The node of `kept` is closed when its camera leaves.
    explicit LinuxCapture(KeptNode& kept);
    LinuxCapture(const LinuxCapture&) = delete;
    LinuxCapture& operator=(const LinuxCapture&) = delete;
    ~LinuxCapture() override;

    /// Waits until every preview that was stopped has let go of its camera; false when that takes
    /// longer than `patience`.
    bool waitForPreviews(std::chrono::milliseconds patience);

    /// Where the first camera of a USB device stands in the list; behind all when it has none.
    std::size_t placeInList(const Attachment& usbDevice) const;

    std::vector<std::shared_ptr<CaptureDevice>> devices() override;
    void setListener(CaptureListener* listener) override;

  private:
    class Device;

    void takeEvents();
    void lookAgain();
    void add(const NodeFacts& facts);
    void remove(const std::shared_ptr<Device>& device);
    std::shared_ptr<Device> find(const std::string& syspath) const;

    KeptNode& kept_;
    std::unique_ptr<UdevFeed> feed_;
    std::shared_ptr<ClosingPreviews> closing_;
    std::vector<std::shared_ptr<Device>> attached_;
    bool looked_ = false;
    CaptureListener* listener_ = nullptr;
    std::unique_ptr<DescriptorWatch> watch_;
};

}  // namespace platform
