#include "tests/kernel/UsbipCamera.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>
#include <system_error>

namespace usbip {
namespace {

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

/// Hands the host's end of a connection to the virtual host controller.
void attach(unsigned port, int socket) {
    constexpr const char* file = "/sys/devices/platform/vhci_hcd.0/attach";
    constexpr int highSpeed = 3;
    constexpr int remoteDevice = 0x00010001;  // bus 1, device 1: nothing looks at it
    const std::string line = std::to_string(port) + ' ' + std::to_string(socket) + ' ' +
                             std::to_string(remoteDevice) + ' ' + std::to_string(highSpeed);
    const int descriptor = open(file, O_WRONLY | O_CLOEXEC);
    if (descriptor < 0)
        fail(file);
    const ssize_t written = write(descriptor, line.data(), line.size());
    const int error = errno;
    close(descriptor);
    errno = error;
    if (written < 0)
        fail("attaching a virtual camera");
}

}  // namespace

UsbipCamera::UsbipCamera(std::shared_ptr<virtualcam::VirtualCamera> camera, unsigned port)
    : camera_(std::move(camera)), function_(camera_) {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        fail("socketpair");
    camera_->powerOn();
    server_ = std::make_unique<UsbipServer>(ends[0], function_);
    try {
        attach(port, ends[1]);
    } catch (...) {
        close(ends[1]);
        throw;
    }
    close(ends[1]);
}

}  // namespace usbip
