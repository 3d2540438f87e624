#include "tests/kernel/UsbipCamera.h"

#include <endian.h>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <linux/usb/video.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QByteArray>
#include <algorithm>
#include <cerrno>
#include <fstream>
#include <map>
#include <stdexcept>

namespace {

constexpr std::uint32_t submit = 1;  // commands; an answer's is two higher
constexpr std::uint32_t unlinking = 2;

// The milliseconds between pictures: the machines that run this are emulated, and slow.
constexpr int picturePause = 100;

/// The pictures of the formats that have a clip, one after the other and over again. H.264 starts
/// behind the one that begins its group.
const std::map<std::string, std::vector<std::string>> clips{
    {"MJPEG", {"unreadable.jpg", "1.jpg", "2.jpg", "3.jpg"}},
    {"H264", {"0.h264", "1.h264", "2.h264"}},
};

/// The digits that answers.txt has under this name; empty for none.
std::string digitsOf(const std::string& name) {
    std::string digits;
    std::ifstream file(QUELVO_ANSWERS);
    for (std::string line; std::getline(file, line);)
        if (line.starts_with(name + ' '))
            digits += line.substr(0, line.find('#')).substr(name.size());
    std::erase(digits, ' ');
    return digits;
}

/// What stands before every message of the protocol: words in network order, then the packet that
/// asks on endpoint 0. In the place of `first` an unlinking has its target, and an end its status.
struct Header {
    std::uint32_t command, sequence, device, direction, endpoint, first, length, unused[3];
    usb_ctrlrequest setup;
};
static_assert(sizeof(Header) == 48);

}  // namespace

UsbipCamera::UsbipCamera(virtualcam::CameraModel model, unsigned port, std::string format)
    : camera_(std::move(model)), format_(std::move(format)) {
    int ends[2] = {-1, -1};  // which are no sockets
    socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends);
    camera_.powerOn();
    // Port, connection, a number of the remote device that nothing looks at, and high speed.
    std::ofstream controller("/sys/devices/platform/vhci_hcd.0/attach");
    controller << port << ' ' << ends[1] << " 65537 3" << std::flush;
    if (!controller)
        throw std::runtime_error("the virtual port takes no camera");
    close(ends[1]);
    socket_ = ends[0];
    thread_ = std::thread([this] { serve(); });
}

UsbipCamera::~UsbipCamera() {
    shutdown(socket_, SHUT_RDWR);
    thread_.join();
    close(socket_);
}

void UsbipCamera::serve() {
    pollfd message{socket_, POLLIN, 0};
    for (bool connected = true; connected;) {
        if (poll(&message, 1, reads_.empty() ? -1 : picturePause) != 0) {
            connected = receive();
        } else {
            const Bytes data = nextPayload();
            write(submit, reads_.front(), 0, data.size(), data);
            reads_.pop_front();
        }
    }
    shutdown(socket_, SHUT_RDWR);
}

/// Handles a message. Returns whether the connection stands.
bool UsbipCamera::receive() {
    Header message{};
    if (!read(&message, sizeof message))
        return false;
    const std::uint32_t sequence = ntohl(message.sequence);
    if (message.command == htonl(unlinking)) {
        std::erase(reads_, ntohl(message.first));  // gets no other answer
        write(unlinking, sequence, -ECONNRESET, 0, {});
        return true;
    }
    if (message.endpoint != 0) {
        reads_.push_back(sequence);
        return true;
    }
    const bool in = (message.setup.bRequestType & USB_DIR_IN) != 0;
    Bytes data(ntohl(message.length));
    if (!in && !read(data.data(), data.size()))
        return false;
    const IOReturn status = control(message.setup, data);
    if (status == 0 || status == EPIPE)
        write(submit, sequence, -status, data.size(), in ? data : Bytes());
    return status != ENODEV;
}

/// Answers on endpoint 0. `data` is what was sent, or zeros in whose place the answer comes.
/// Returns 0, EPIPE (stalled), ETIMEDOUT (the request never ends) or ENODEV (fallen off).
IOReturn UsbipCamera::control(const usb_ctrlrequest& setup, Bytes& data) {
    const std::uint16_t value = le16toh(setup.wValue);
    const std::uint16_t index = le16toh(setup.wIndex);
    const auto length = static_cast<std::uint16_t>(data.size());
    const bool in = (setup.bRequestType & USB_DIR_IN) != 0;
    const bool toClass = (setup.bRequestType & USB_TYPE_MASK) == USB_TYPE_CLASS;
    if (toClass && (index & 0xFF) == 0) {
        IOUSBDevRequest request{
            setup.bRequestType, setup.bRequest, value, index, length, data.data(), 0};
        const IOReturn status = camera_.controlRequest(request);
        data.resize(in ? request.wLenDone : length);
        return status;
    }
    if (in)
        data = answerOf(toClass ? "stream" : fmt::format("{:04x}", value));
    data.resize(std::min<std::size_t>(data.size(), length));
    return data.empty() && length != 0 ? EPIPE : 0;
}

/// What answers.txt has under this name for this camera; empty for none.
UsbipCamera::Bytes UsbipCamera::answerOf(const std::string& name) const {
    const virtualcam::CameraModel& model = camera_.model();
    const bool hasLens = model.controls.size() == virtualcam::studioControls().size();
    const std::string letters = fmt::format("{:02x}00", fmt::join(model.name, "00"));  // of ASCII
    const std::string format = digitsOf(format_);
    const auto length = static_cast<std::uint16_t>(143 + format.size() / 2);
    const std::string digits =
        fmt::format(fmt::runtime(digitsOf(name)), fmt::arg("product", htobe16(model.productID)),
                    fmt::arg("lens", hasLens ? "2a0a02" : "0a0000"), fmt::arg("format", format),
                    fmt::arg("length", htobe16(length)),
                    fmt::arg("nameLength", 2 + letters.size() / 2), fmt::arg("name", letters));
    const QByteArray bytes = QByteArray::fromHex(digits.c_str());
    return {bytes.begin(), bytes.end()};
}

/// The next picture in a payload of its own: behind a header, whose lowest bit tells it from the
/// one before.
UsbipCamera::Bytes UsbipCamera::nextPayload() {
    const unsigned number = pictures_++;
    Bytes payload{2, static_cast<std::uint8_t>(UVC_STREAM_EOH | UVC_STREAM_EOF | number % 2)};
    if (const auto clip = clips.find(format_); clip != clips.end()) {
        std::ifstream file(QUELVO_PICTURES "/" + clip->second[number % clip->second.size()]);
        payload.insert(payload.end(), std::istreambuf_iterator<char>(file), {});
    } else {  // YUY2, a ramp. The camera's own scene takes an emulated machine too long.
        const int leftmost = 55 + camera_.nextPicture().brightness / 4;
        for (int i = 0; i < 80 * 60; ++i) {
            const int brighter = (i % 80 + i / 80) / 2;  // to the right and downwards
            payload.insert(payload.end(), {static_cast<std::uint8_t>(leftmost + brighter), 128});
        }
    }
    return payload;
}

bool UsbipCamera::read(void* to, std::size_t length) const {
    return length == 0 || recv(socket_, to, length, MSG_WAITALL) == static_cast<ssize_t>(length);
}

/// Answers `command`. A connection that is broken shows at the next `read`.
void UsbipCamera::write(std::uint32_t command, std::uint32_t sequence, int status,
                        std::size_t length, const Bytes& data) const {
    const Header header{.command = htonl(command + 2),
                        .sequence = htonl(sequence),
                        .first = htonl(static_cast<std::uint32_t>(status)),
                        .length = htonl(static_cast<std::uint32_t>(length))};
    send(socket_, &header, sizeof header, MSG_NOSIGNAL);
    send(socket_, data.data(), data.size(), MSG_NOSIGNAL);
}
