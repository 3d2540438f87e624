#pragma once

#include <cerrno>

namespace platform {

/// The ioctl calls on one open device node.
class Ioctl {
  public:
    virtual ~Ioctl() = default;

    /// Makes one call: 0, or an errno value.
    virtual int call(unsigned long request, void* argument) = 0;
};

/// Makes the call again for as long as signals break it off; the kernel has then done nothing yet.
inline int callUninterrupted(Ioctl& node, unsigned long request, void* argument) {
    int status = EINTR;
    while (status == EINTR)
        status = node.call(request, argument);
    return status;
}

}  // namespace platform
