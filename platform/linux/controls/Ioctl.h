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

/// Repeats the call for as long as signals interrupt it, which is before it has done anything.
inline int callUninterrupted(Ioctl& node, unsigned long request, void* argument) {
    int status = EINTR;
    while (status == EINTR)
        status = node.call(request, argument);
    return status;
}

}  // namespace platform
