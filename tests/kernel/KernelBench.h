#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/backend/LogSink.h"
#include "platform/linux/LinuxCapture.h"
#include "platform/linux/LinuxUsb.h"
#include "tests/kernel/UsbipCamera.h"

/// Runs the event loop until `done` holds, and returns whether it came to hold. Woken by events
/// alone: what `done` looks at changes on the main thread.
bool waitUntil(const std::function<bool()>& done);

/// A camera as the wire gave it to this machine's kernel, and the capture back end's view of it.
struct PluggedCamera {
    std::unique_ptr<usbip::UsbipCamera> port;
    std::shared_ptr<platform::CaptureDevice> device;

    virtualcam::VirtualCamera& camera() const { return port->camera(); }
};

/// The real back ends over this machine's ports, into which a test plugs virtual cameras. Comes and
/// goes with no camera plugged in.
class KernelBench : public platform::CaptureListener {
  public:
    KernelBench() { capture.setListener(this); }
    KernelBench(const KernelBench&) = delete;
    KernelBench& operator=(const KernelBench&) = delete;
    ~KernelBench() override;

    /// Plugs a camera in and waits until it is announced. Throws when that does not happen.
    PluggedCamera plug(const virtualcam::CameraModel& model, unsigned port);

    /// Pulls the camera out, if it is still in, and waits until its departure is announced.
    void unplug(PluggedCamera& camera);

    /// The USB device of the camera in `port`, a high-speed port of bus 1; null when there is none.
    std::shared_ptr<platform::UsbDevice> usbDevice(unsigned port);

    /// The opened video-control interface of the camera in `port`.
    std::shared_ptr<platform::UsbInterface> openInterface(unsigned port);

    void arrived(std::shared_ptr<platform::CaptureDevice> device) override;
    void left(std::shared_ptr<platform::CaptureDevice> device) override;

    platform::LinuxCapture capture;

  private:
    platform::LinuxUsb usb_;
    std::vector<std::shared_ptr<platform::CaptureDevice>> announced_;  // and not gone
    std::shared_ptr<platform::CaptureDevice> arrived_;  // the latest, until it is plugged
};

/// A request by the class-specific rules of UVC on `id`, with `data` as what is sent or the room
/// for the answer.
IOUSBDevRequest requestFor(virtualcam::Request code, virtualcam::ControlId id,
                           std::vector<std::uint8_t>& data);

/// Makes the request and cuts `data` to what is done.
IOReturn transfer(platform::UsbInterface& interface, virtualcam::Request code,
                  virtualcam::ControlId id, std::vector<std::uint8_t>& data);
