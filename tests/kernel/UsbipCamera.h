#pragma once

#include <linux/usb/ch9.h>

#include <deque>
#include <string>
#include <thread>
#include <vector>

#include "virtualcam/camera/VirtualCamera.h"

/// A virtual camera in a USB port of this machine, where the kernel's own driver takes it for a
/// camera like any other: descriptors, stream negotiation and video stand around the camera's own
/// control requests, which reach it unchanged. A thread of its own answers as the device's end of a
/// USB/IP connection.
class UsbipCamera {
  public:
    /// Plugs the camera into high-speed port `port` of the first virtual host controller. Its video
    /// has the format that answers.txt calls `format`. Throws when the port is taken or the
    /// controller is missing.
    UsbipCamera(virtualcam::CameraModel model, unsigned port, std::string format);
    UsbipCamera(const UsbipCamera&) = delete;
    UsbipCamera& operator=(const UsbipCamera&) = delete;
    /// Breaks the connection: the camera is pulled out.
    ~UsbipCamera();

    virtualcam::VirtualCamera& camera() { return camera_; }

  private:
    using Bytes = std::vector<std::uint8_t>;

    void serve();
    bool receive();
    IOReturn control(const usb_ctrlrequest& setup, Bytes& data);
    Bytes answerOf(const std::string& name) const;
    Bytes nextPayload();
    bool read(void* to, std::size_t length) const;
    void write(std::uint32_t command, std::uint32_t sequence, int status, std::size_t length,
               const Bytes& data) const;

    virtualcam::VirtualCamera camera_;
    const std::string format_;
    int socket_ = -1;
    std::deque<std::uint32_t> reads_;  // waiting on the bulk endpoint
    unsigned pictures_ = 0;            // that were sent
    std::thread thread_;
};
