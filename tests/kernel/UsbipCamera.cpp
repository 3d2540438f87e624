#include "tests/kernel/UsbipCamera.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <system_error>

namespace usbip {
namespace {

constexpr std::uint32_t kSubmit = 1;  // commands; an answer's is two higher
constexpr std::uint32_t kUnlink = 2;

}  // namespace

/// What stands before every message of the protocol: words in network order, then the packet that
/// asks on endpoint 0. `first` and `length` are the fields of a submission and of its end; an
/// unlinking and its end have one, at the place of `first`.
struct UsbipCamera::Header {
    std::uint32_t command, sequence, device, direction, endpoint, first, length, unused[3];
    usb_ctrlrequest setup;
};

UsbipCamera::UsbipCamera(std::shared_ptr<virtualcam::VirtualCamera> camera, unsigned port)
    : camera_(std::move(camera)), function_(camera_) {
    static_assert(sizeof(Header) == 48);
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        throw std::system_error(errno, std::generic_category(), "socketpair");
    camera_->powerOn();
    // Port, connection, a number of the remote device that nothing looks at, and high speed.
    std::ofstream controller("/sys/devices/platform/vhci_hcd.0/attach");
    controller << port << ' ' << ends[1] << " 65537 3" << std::flush;
    const int error = errno;
    close(ends[1]);
    socket_ = ends[0];
    if (!controller) {
        close(socket_);
        throw std::system_error(error, std::generic_category(), "attaching a virtual camera");
    }
    thread_ = std::thread([this] { serve(); });
}

UsbipCamera::~UsbipCamera() {
    shutdown(socket_, SHUT_RDWR);
    thread_.join();
    close(socket_);
}

void UsbipCamera::serve() {
    for (bool connected = true; connected;) {
        pollfd message{socket_, POLLIN, 0};
        if (poll(&message, 1, reads_.empty() ? -1 : function_.pause()) != 0) {
            connected = receive();
        } else {
            const auto [sequence, room] = *reads_.begin();
            const Bytes data = function_.payload(room);
            write(kSubmit, sequence, 0, data.size(), data);
            reads_.erase(sequence);
        }
    }
    shutdown(socket_, SHUT_RDWR);
}

/// Handles a message. Returns whether the connection stands.
bool UsbipCamera::receive() {
    Header message{};
    if (!read(&message, sizeof message))
        return false;
    if (message.command == htonl(kSubmit))
        return submit(message);
    // What is taken back gets no other answer; what has ended has had its own.
    const auto ended = reads_.erase(ntohl(message.first)) + stuck_.erase(ntohl(message.first));
    write(kUnlink, ntohl(message.sequence), ended != 0 ? -ECONNRESET : 0, 0, {});
    return true;
}

bool UsbipCamera::submit(const Header& command) {
    const std::uint32_t sequence = ntohl(command.sequence);
    if (command.endpoint != 0) {
        reads_[sequence] = ntohl(command.length);
        return true;
    }
    const bool in = (command.setup.bRequestType & USB_DIR_IN) != 0;
    Bytes data(ntohl(command.length));
    if (!in && !read(data.data(), data.size()))
        return false;
    const IOReturn status = function_.control(command.setup, data);
    if (status == ETIMEDOUT)
        stuck_.insert(sequence);
    else if (status != ENODEV)
        write(kSubmit, sequence, -status, status == 0 ? data.size() : 0,
              in && status == 0 ? data : Bytes());
    return status != ENODEV;
}

bool UsbipCamera::read(void* to, std::size_t length) const {
    return length == 0 || recv(socket_, to, length, MSG_WAITALL) == static_cast<ssize_t>(length);
}

/// Answers `command`. A connection that is broken shows at the next `read`.
void UsbipCamera::write(std::uint32_t command, std::uint32_t sequence, int status,
                        std::size_t length, const Bytes& data) const {
    Header header{};
    header.command = htonl(command + 2);
    header.sequence = htonl(sequence);
    header.first = htonl(static_cast<std::uint32_t>(status));
    header.length = htonl(static_cast<std::uint32_t>(length));
    const auto* start = reinterpret_cast<const std::uint8_t*>(&header);
    Bytes message(start, start + sizeof header);
    message.insert(message.end(), data.begin(), data.end());
    send(socket_, message.data(), message.size(), MSG_NOSIGNAL);
}

}  // namespace usbip
