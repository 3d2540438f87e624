#include "platform/linux/devices/UdevFeed.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string_view>

#include "platform/linux/devices/VideoNode.h"

namespace platform {
namespace {

constexpr const char* videoNodes = "video4linux";
constexpr const char* soundNodes = "sound";

/// Whether a sound node is the recording side of a card, "pcmC0D0c".
bool records(std::string_view sysname) {
    return sysname.starts_with("pcmC") && sysname.ends_with("c");
}

/// Whether a node can show a picture by itself. What udev has found out when the node appeared is
/// believed of a USB device, and of a node that neither gives nor takes pictures: to ask would wake
/// a sleeping camera, and may not be permitted. Of others udev says too little: a pipeline's nodes
/// look like cameras to it, and a loopback gives pictures only once it is given some.
bool deliversVideo(udev_device* device, NodeFacts& facts) {
    if (!facts.sysname.starts_with("video"))
        return false;  // a sensor or another part of a pipeline, a radio, teletext
    facts.driverName = textOrEmpty(udev_device_get_property_value(device, "ID_V4L_PRODUCT"));
    if (facts.driverName.empty())
        facts.driverName = udevAttribute(device, "name");
    const auto kinds = textOrEmpty(udev_device_get_property_value(device, "ID_V4L_CAPABILITIES"));
    const bool captures = kinds.find(":capture:") != std::string::npos;
    const bool takes = kinds.find(":video_output:") != std::string::npos;
    if (!kinds.empty() && (facts.usb || (!captures && !takes)))
        return captures;
    VideoNode node;
    const int status = node.open(facts.devnode, udev_device_get_devnum(device));
    // A node that may not be asked (yet) counts as a camera when it is its device's first one, so
    // that opening it can say what is wrong: no further event comes with the permission.
    if (status == EACCES || status == EPERM)
        return (kinds.empty() || captures) && facts.index == 0;
    return status == 0 && capturesVideo(node, facts.driverName);
}

int precedingFunctions(udev* context, udev_device* device, udev_device* interface) {
    const int own = udevNumber(interface, "bInterfaceNumber", 16).value_or(0);
    const auto interfaces = usbInterfaces(context, device);
    return static_cast<int>(std::ranges::count_if(interfaces, [&](const UdevDevicePtr& other) {
        return isVideoControl(other.get()) &&
               udevNumber(other.get(), "bInterfaceNumber", 16).value_or(0) < own;
    }));
}

std::optional<UsbFacts> usbFacts(udev* context, udev_device* node) {
    udev_device* device = udev_device_get_parent_with_subsystem_devtype(node, "usb", "usb_device");
    if (device == nullptr)
        return std::nullopt;
    UsbFacts facts;
    facts.attachment = attachmentOf(device);
    facts.sysname = textOrEmpty(udev_device_get_sysname(device));
    facts.vendorID = usbID(device, "idVendor");
    facts.productID = usbID(device, "idProduct");
    facts.product = udevAttribute(device, "product");
    if (udev_device* interface =
            udev_device_get_parent_with_subsystem_devtype(node, "usb", "usb_interface")) {
        facts.function = precedingFunctions(context, device, interface);
        facts.interfaceName = udevAttribute(interface, "interface");
    }
    return facts;
}

/// The first ancestor on a bus: a sound node's parent is its card, whose number may change.
std::string placeOf(udev_device* node, std::string_view subsystem) {
    udev_device* parent = udev_device_get_parent(node);
    while (parent != nullptr && textOrEmpty(udev_device_get_subsystem(parent)) == subsystem)
        parent = udev_device_get_parent(parent);
    const char* bus = parent == nullptr ? nullptr : udev_device_get_subsystem(parent);
    if (bus == nullptr)
        return fmt::format("virtual:{}", textOrEmpty(udev_device_get_sysname(node)));
    // The name is missing when the device leaves just now.
    return fmt::format("{}:{}", bus, textOrEmpty(udev_device_get_sysname(parent)));
}

/// The number of a card's recording node, the D0 of "pcmC1D0c".
int recordingIndex(const std::string& sysname) {
    const std::size_t place = sysname.find('D');
    return place == std::string::npos ? 0 : std::atoi(sysname.c_str() + place + 1);
}

/// Returns what is known of `device`, or nothing when it is no capture node (any more).
std::optional<NodeFacts> captureFacts(udev* context, udev_device* device) {
    NodeFacts facts;
    facts.syspath = textOrEmpty(udev_device_get_syspath(device));
    facts.sysname = textOrEmpty(udev_device_get_sysname(device));
    facts.devnode = textOrEmpty(udev_device_get_devnode(device));
    const std::string subsystem = textOrEmpty(udev_device_get_subsystem(device));
    facts.usb = usbFacts(context, device);
    facts.hasVideo = subsystem == videoNodes;
    if (facts.hasVideo) {
        facts.index = udevNumber(device, "index", 10).value_or(0);
        if (!deliversVideo(device, facts))
            return std::nullopt;
    } else {
        if (!records(facts.sysname))
            return std::nullopt;
        facts.index = recordingIndex(facts.sysname);
        if (udev_device* card = udev_device_get_parent(device))
            facts.driverName = udevAttribute(card, "id");
    }
    facts.parent = placeOf(device, subsystem);
    return facts;
}

}  // namespace

UdevFeed::UdevFeed() : udev_(udev_new()) {
    if (!udev_)
        return;
    // "udev": after the rules have run, when the permissions are in place.
    UdevMonitorPtr monitor(udev_monitor_new_from_netlink(udev_.get(), "udev"));
    for (const char* subsystem : {videoNodes, soundNodes})
        if (monitor &&
            udev_monitor_filter_add_match_subsystem_devtype(monitor.get(), subsystem, nullptr) < 0)
            return;
    if (monitor && udev_monitor_enable_receiving(monitor.get()) >= 0)
        monitor_ = std::move(monitor);
}

int UdevFeed::descriptor() const {
    return monitor_ ? udev_monitor_get_fd(monitor_.get()) : -1;
}

std::optional<UdevFeed::Event> UdevFeed::next() {
    while (monitor_) {
        errno = 0;
        const UdevDevicePtr device(udev_monitor_receive_device(monitor_.get()));
        if (!device) {
            if (errno == EINTR)
                continue;
            if (errno == ENOBUFS)
                return Event{Change::overflow, {}};
            break;
        }
        if (textOrEmpty(udev_device_get_action(device.get())) == "remove") {
            Event event{Change::left, {}};
            event.facts.syspath = textOrEmpty(udev_device_get_syspath(device.get()));
            return event;
        }
        if (auto facts = captureFacts(udev_.get(), device.get()))
            return Event{Change::arrived, std::move(*facts)};
    }
    return std::nullopt;
}

std::vector<NodeFacts> UdevFeed::attached() {
    std::vector<NodeFacts> found;
    if (!udev_)
        return found;
    for (const char* subsystem : {videoNodes, soundNodes}) {
        auto devices = udevDevices(udev_.get(), subsystem, nullptr);
        sortByNumber(devices);
        for (const UdevDevicePtr& device : devices)
            if (auto facts = captureFacts(udev_.get(), device.get()))
                found.push_back(std::move(*facts));
    }
    return found;
}

}  // namespace platform
