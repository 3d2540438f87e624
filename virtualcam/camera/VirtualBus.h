#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/backend/CaptureBackend.h"
#include "platform/backend/UsbBackend.h"
#include "virtualcam/camera/VirtualCamera.h"

namespace virtualcam {

/// A bus that virtual cameras and microphones are plugged into: the back ends for both the USB
/// devices and the capture devices. Main thread only, except where noted.
class VirtualBus {
  public:
    VirtualBus();
    VirtualBus(const VirtualBus&) = delete;
    VirtualBus& operator=(const VirtualBus&) = delete;

    /// Pulls everything out, so that no handle that is still held reaches a camera.
    ~VirtualBus();

    /// The two sides of the bus, for `platform::Backends`; they live as long as the bus.
    platform::UsbBackend& usb();
    platform::CaptureBackend& capture();

    /// Plugs `camera` in and starts it; the listener hears of its capture device, and then of its
    /// own microphone when its audio stream is in force. A camera is plugged in at most once.
    void plug(const std::shared_ptr<VirtualCamera>& camera);

    /// Plugs in a microphone that belongs to no camera; there is no way to pull it out again.
    void plugMicrophone(const std::string& uniqueID, const std::string& name);

    /// Pulls `camera` out: its handles are dead (ENODEV) and a running picture fails before the
    /// listener hears of it. Harmless when it is not plugged in.
    void unplug(const std::shared_ptr<VirtualCamera>& camera);

    /// Pulls `camera` out and plugs it in again, as its own restart does.
    void restart(const std::shared_ptr<VirtualCamera>& camera);

    /// Tells the listener of cameras that have fallen off the bus by themselves. They are out of
    /// both lists already; the system's notice of it comes later, from the main loop.
    void announceVanished();

  private:
    struct Attachment;
    class UsbSide;
    class CaptureSide;

    std::shared_ptr<Attachment> find(const std::shared_ptr<VirtualCamera>& camera) const;
    void add(Attachment& attachment, std::shared_ptr<platform::CaptureDevice> device);
    void remove(const std::shared_ptr<Attachment>& attachment);
    static void detach(const Attachment& attachment);

    std::vector<std::shared_ptr<Attachment>> attachments_;  // in the order of plugging
    std::unique_ptr<UsbSide> usb_;
    std::unique_ptr<CaptureSide> capture_;
};

/// The unique identifier of the capture device of a camera of `model`: "0x", the location id as
/// eight hexadecimal digits, and the vendor and product id as four each.
std::string uniqueIDOf(const CameraModel& model);

}  // namespace virtualcam
