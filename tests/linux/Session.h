#pragma once

#include <fmt/format.h>

#include <QByteArray>
#include <QCoreApplication>
#include <stdexcept>

#include "platform/linux/devices/KeptNode.h"
#include "platform/linux/devices/LinuxCapture.h"
#include "platform/linux/devices/LinuxUsb.h"
#include "tests/linux/FakeMachine.h"

namespace platform {

using Interfaces = std::vector<std::shared_ptr<UsbInterface>>;

inline std::string describe(UsbDevice& device) {
    Interfaces interfaces;
    device.interfaces(interfaces);
    auto text = fmt::format("{:04x}:{:04x} {:08x}", device.vendorID(), device.productID(),
                            device.locationID());
    for (const auto& interface : interfaces) {
        const auto is = interface->descriptor();
        text += fmt::format(", {:02x} {:02x} {:02x} {}", is.interfaceClass, is.interfaceSubClass,
                            is.interfaceProtocol, is.alternateSetting);
    }
    return text;
}

/// Sends a request as it always is, opened before and closed behind it, and returns its data. The
/// sanitizer sees what is written beside them.
inline std::string ask(UsbInterface& interface, const std::string& line) {
    const QByteArray bytes = QByteArray::fromHex(line.c_str()).leftJustified(6, '\0');
    const std::vector<std::uint8_t> sent(bytes.begin() + 6, bytes.end());
    std::vector<std::uint8_t> data = sent;
    const auto at = [&](int place) { return static_cast<std::uint8_t>(bytes[place]); };
    const auto high = [&](int place) { return static_cast<std::uint16_t>(at(place) << 8U); };
    const auto size = static_cast<std::uint16_t>(data.size());
    void* const room = line.ends_with("nothing") ? nullptr : data.data();
    IOUSBDevRequest request{at(0), at(1), high(2), high(4), size, room};
    const IOReturn opened = interface.open();
    const IOReturn status = interface.controlRequest(request);
    std::string hex = fmt::format("{:02x}", fmt::join(data, ""));
    if (interface.close() != 0 || (status != 0 && (data != sent || request.wLenDone != 0)))
        throw std::logic_error(line + " leaves more than an error: " + hex);
    if (status != 0)
        return strerrorname_np(opened == 0 ? status : opened);
    return request.wLenDone == size ? hex : hex.insert(std::size_t{2} * request.wLenDone, "|");
}

/// The back end on the machine of the tests, and what it comes to as a script goes on.
struct Session : CaptureListener {
    void arrived(std::shared_ptr<CaptureDevice> which) override { hear('+', *which); }
    void left(std::shared_ptr<CaptureDevice> which) override { hear('-', *which); }
    void hear(char sign, const CaptureDevice& which) {
        said.push_back(sign + which.localizedName());
        perform("list captures");
    }

    void perform(const std::string& line) {
        if (line == "listen")
            capture.setListener(this);
        else if (line == "hear events")
            while (!fakeMachine.events.empty() && QEventLoop().processEvents())
                continue;
        else if (line == "list captures")
            for (const auto& each : capture.devices())
                said.push_back(each->uniqueID() + ' ' + each->localizedName());
        else if (line == "open captures")
            for (const auto& each : capture.devices())
                said.emplace_back(each->open(said.emplace_back()) ? "is open" : "is not open");
        else if (line == "list usb")
            for (const auto& each : usb.devices())
                said.push_back(describe(*each));
        else if (line == "list open files")
            for (const auto& [descriptor, path] : fakeMachine.open)
                said.push_back(path);
        else if (line.starts_with("seconds pass "))
            now += std::chrono::seconds(line.back() - '0');
        else if (line.starts_with('9'))
            said.push_back(fakeMachine.tree["/dev/video10"][line]);
        else if (line == "find camera")
            findCamera();
        else if (found.empty())
            said.emplace_back("no camera");
        else if (line == "is there")
            for (const IOReturn status :
                 {camera->createPlugIn(), camera->queryInterface(), camera->interfaces(found),
                  found[0]->createPlugIn(), found[0]->queryInterface()})
                said.push_back(strerrorname_np(status));
        else
            said.push_back(ask(*found[0], line));
    }

    /// The device that is listed last.
    void findCamera() {
        found.clear();
        for (const auto& device : usb.devices())
            (camera = device)->interfaces(found);
    }

    Lines said;
    KeptNode node;
    LinuxCapture capture{node};
    std::chrono::steady_clock::time_point now;
    LinuxUsb usb{node, capture, [this] { return now; }};
    std::shared_ptr<UsbDevice> camera;
    Interfaces found;
};

/// Begins with a sound machine, changes it as the script says, and performs the other lines in a
/// session that begins with the first of them.
inline Lines saidIn(const Lines& script) {
    fakeMachine = FakeMachine();
    std::optional<Session> session;
    for (const std::string& line : script)
        if (line.starts_with('/'))
            fakeMachine.change(line);
        else
            (session ? *session : session.emplace()).perform(line);
    Lines said = session ? session->said : Lines();
    session.reset();
    if (!fakeMachine.open.empty())
        throw std::logic_error("a device file is left open");
    return said;
}

}  // namespace platform
