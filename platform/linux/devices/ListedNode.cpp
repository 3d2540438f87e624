#include "platform/linux/devices/ListedNode.h"

#include <cerrno>

#include "platform/linux/devices/Udev.h"

namespace platform {

int openListed(const NodeFacts& listed, VideoNode& node) {
    const UdevPtr context(udev_new());
    const auto device = udevDevice(context.get(), listed.syspath);
    if (!device)
        return ENODEV;
    const int status = node.open(listed.devnode, udev_device_get_devnum(device.get()));
    // Looked at last: from here on the kernel gives the node's number to nothing else.
    if (status != 0 || !listed.usb)
        return status;
    return udevDevice(context.get(), listed.usb->attachment) ? 0 : ENODEV;
}

}  // namespace platform
