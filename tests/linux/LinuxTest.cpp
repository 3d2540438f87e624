#include <gmock/gmock.h>

#include <QByteArray>
#include <QCoreApplication>

#include "platform/linux/SystemLog.h"
#include "platform/linux/devices/KeptNode.h"
#include "platform/linux/devices/LinuxCapture.h"
#include "platform/linux/devices/LinuxUsb.h"
#include "tests/linux/FakeMachine.h"
#include "tests/linux/Rows.h"

namespace platform {
namespace {

using Interfaces = std::vector<std::shared_ptr<UsbInterface>>;

std::string describe(UsbDevice& device) {
    Interfaces interfaces;
    device.interfaces(interfaces);
    auto text = fmt::format("{:04x}:{:04x} {:08x}", device.vendorID(), device.productID(),
                            device.locationID());
    for (const auto& interface : interfaces) {
        const UsbInterface::Descriptor is = interface->descriptor();
        text += fmt::format(", {:02x} {:02x} {:02x} {}", is.interfaceClass, is.interfaceSubClass,
                            is.interfaceProtocol, is.alternateSetting);
    }
    return text;
}

/// Sends a request as it always is, opened before and closed behind it, and returns its data. The
/// sanitizer sees what is written beside them.
std::string ask(UsbInterface& interface, const std::string& line) {
    const QByteArray bytes = QByteArray::fromHex(line.c_str());
    std::vector<std::uint8_t> data(bytes.begin() + 6, bytes.end());
    const auto at = [&](int place) { return static_cast<std::uint8_t>(bytes[place]); };
    const auto high = [&](int place) { return static_cast<std::uint16_t>(at(place) << 8U); };
    const auto size = static_cast<std::uint16_t>(data.size());
    IOUSBDevRequest request{at(0), at(1), high(2), high(4), size, data.data()};
    const IOReturn opened = interface.open();
    const IOReturn status = interface.controlRequest(request);
    EXPECT_EQ(interface.close(), kIOReturnSuccess);
    std::string hex = fmt::format("{:02x}", fmt::join(data, ""));
    if (status == kIOReturnSuccess)
        return request.wLenDone == size ? hex : hex.insert(std::size_t{2} * request.wLenDone, "|");
    EXPECT_TRUE(line.ends_with(hex) && request.wLenDone == 0) << line << " became " << hex;
    return strerrorname_np(opened == kIOReturnSuccess ? status : opened);
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
            while (!fakeMachine.events.empty())
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
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
        else if (line == "find camera")
            (camera = usb.devices().at(1))->interfaces(found = {});
        else if (line == "is there")
            for (const IOReturn status :
                 {camera->createPlugIn(), camera->queryInterface(), camera->interfaces(found),
                  found[0]->createPlugIn(), found[0]->queryInterface()})
                said.push_back(strerrorname_np(status));
        else if (line.starts_with("seconds pass "))
            now += std::chrono::seconds(line.back() - '0');
        else if (line.starts_with('9'))
            said.push_back(fakeMachine.tree["/dev/video10"][line]);
        else
            said.push_back(ask(*found.at(0), line));
    }

    Lines said;
    KeptNode node;
    LinuxCapture capture{node};
    std::chrono::steady_clock::time_point now;
    LinuxUsb usb{node, capture, [this] { return now; }};
    std::shared_ptr<UsbDevice> camera;
    Interfaces found;
};

TEST(Linux, DoesWhatTheScriptsSay) {
    int argc = 0;
    const QCoreApplication application(argc, nullptr);
    for (const char* scripts : {"captures.txt", "usb.txt", "opened.txt", "requests.txt"})
        checkRows(scripts, [](const Lines& script) {
            fakeMachine = FakeMachine();
            std::optional<Session> session;
            for (const std::string& line : script)
                if (line.starts_with('/'))
                    fakeMachine.change(line);
                else
                    (session ? *session : session.emplace()).perform(line);
            Lines said = session->said;
            session.reset();
            EXPECT_THAT(fakeMachine.open, testing::IsEmpty());
            return said;
        });
}

TEST(SystemLog, SendsEachLineAsItIs) {
    testing::internal::CaptureStderr();
    SystemLog().line(std::string_view("100 %s of it, and no more").substr(0, 12));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "quelvo: 100 %s of it\n");
}

}  // namespace
}  // namespace platform
