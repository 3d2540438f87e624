#pragma once

#include <map>
#include <set>
#include <thread>

#include "tests/kernel/UvcFunction.h"

namespace usbip {

/// A virtual camera in a USB port of this machine, where the kernel's own driver takes it for a
/// camera like any other. A thread of its own answers as the device's end of a USB/IP connection.
class UsbipCamera {
  public:
    /// Plugs the camera into high-speed port `port` of the first virtual host controller. Throws
    /// std::system_error when the port is taken or the controller is missing.
    UsbipCamera(std::shared_ptr<virtualcam::VirtualCamera> camera, unsigned port);
    UsbipCamera(const UsbipCamera&) = delete;
    UsbipCamera& operator=(const UsbipCamera&) = delete;
    /// Breaks the connection: the camera is pulled out.
    ~UsbipCamera();

    virtualcam::VirtualCamera& camera() const { return *camera_; }

  private:
    struct Header;

    void serve();
    bool receive();
    bool submit(const Header& command);
    bool read(void* to, std::size_t length) const;
    void write(std::uint32_t command, std::uint32_t sequence, int status, std::size_t length,
               const Bytes& data) const;

    const std::shared_ptr<virtualcam::VirtualCamera> camera_;
    UvcFunction function_;
    int socket_ = -1;
    std::map<std::uint32_t, std::uint32_t> reads_;  // waiting on the bulk endpoint, and their room
    std::set<std::uint32_t> stuck_;                 // requests that never end by themselves
    std::thread thread_;
};

}  // namespace usbip
