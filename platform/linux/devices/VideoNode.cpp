#include "platform/linux/devices/VideoNode.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <system_error>
#include <utility>

namespace platform {
namespace {

/// A node that is gone is ENODEV, whatever the kernel calls it.
int openStatus(int error) {
    return error == ENOENT || error == ENXIO ? ENODEV : error;
}

}  // namespace

VideoNode::~VideoNode() {
    close();
}

int VideoNode::open(const std::string& path, dev_t number) {
    close();
    do {
        descriptor_ = ::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK);
    } while (descriptor_ < 0 && errno == EINTR);
    if (descriptor_ < 0)
        return openStatus(errno);
    struct stat found {};
    if (::fstat(descriptor_, &found) == 0 && found.st_rdev == number)
        return 0;
    close();
    return ENODEV;
}

void VideoNode::close() {
    if (const int descriptor = std::exchange(descriptor_, -1); descriptor >= 0)
        ::close(descriptor);
}

int VideoNode::call(unsigned long request, void* argument) {
    return ::ioctl(descriptor_, request, argument) < 0 ? errno : 0;
}

bool capturesVideo(Ioctl& node, std::string& card) {
    v4l2_capability capability{};
    if (callUninterrupted(node, VIDIOC_QUERYCAP, &capability) != 0)
        return false;
    // `capabilities` are those of all nodes of the device together.
    const std::uint32_t own = (capability.capabilities & V4L2_CAP_DEVICE_CAPS) != 0
                                  ? capability.device_caps
                                  : capability.capabilities;
    const auto* name = reinterpret_cast<const char*>(capability.card);
    card.assign(name, strnlen(name, sizeof capability.card));
    constexpr std::uint32_t capture = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_VIDEO_CAPTURE_MPLANE;
    return (own & capture) != 0 && (own & V4L2_CAP_IO_MC) == 0;
}

int checkUnused(Ioctl& node) {
    // To free buffers, even none, takes the right to stream, which one program has at a time.
    v4l2_requestbuffers none{};
    none.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    none.memory = V4L2_MEMORY_MMAP;
    return callUninterrupted(node, VIDIOC_REQBUFS, &none) == EBUSY ? EBUSY : 0;
}

std::string openFailure(const std::string& path, int status) {
    switch (status) {
        case EACCES:
        case EPERM:
            return fmt::format("There is no permission to use the camera at {}.", path);
        case EBUSY:
            return fmt::format("The camera at {} is in use by another program.", path);
        case ENODEV:
            return fmt::format("The camera at {} is gone.", path);
        default:
            return fmt::format("The camera at {} can't be opened: {}.", path,
                               std::generic_category().message(status));
    }
}

std::string whyNotOpenable(const std::string& path) {
    const bool openable = ::faccessat(AT_FDCWD, path.c_str(), R_OK | W_OK, AT_EACCESS) == 0;
    return openable ? std::string() : openFailure(path, openStatus(errno));
}

}  // namespace platform
