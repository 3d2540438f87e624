#include <fmt/format.h>
#include <gmock/gmock.h>

#include "platform/linux/devices/KeptNode.h"
#include "platform/linux/devices/LinuxCapture.h"
#include "platform/linux/devices/LinuxUsb.h"
#include "tests/linux/FakeMachine.h"
#include "tests/linux/Rows.h"

namespace platform {
namespace {

using testing::IsEmpty;

using Interfaces = std::vector<std::shared_ptr<UsbInterface>>;

/// Each row of usb.txt changes the machine, and says which devices with which interfaces are there.
TEST(Usb, HasTheDevicesWithTheirInterfacesInOrder) {
    for (const Row& row : readRows("usb.txt")) {
        FakeMachine::get().reset();
        for (const std::string& line : row.given)
            FakeMachine::get().change(line);
        KeptNode node;
        std::vector<std::string> found;
        for (const auto& device : LinuxUsb(node).devices()) {
            found.push_back(fmt::format("{:04x}:{:04x} {:08x}", device->vendorID(),
                                        device->productID(), device->locationID()));
            Interfaces interfaces;
            EXPECT_EQ(device->interfaces(interfaces), kIOReturnSuccess);
            for (const auto& interface : interfaces) {
                const UsbInterface::Descriptor is = interface->descriptor();
                found.back() +=
                    fmt::format(", {:02x} {:02x} {:02x} {}", is.interfaceClass,
                                is.interfaceSubClass, is.interfaceProtocol, is.alternateSetting);
            }
        }
        EXPECT_EQ(inLines(found), inLines(row.expected)) << "with\n" << inLines(row.given);
    }
}

const std::string camera = "/sys/pci/00:14.0/usb1/1-2";

/// The interface of the machine's camera that takes control requests.
class UsbControl : public testing::Test {
  protected:
    UsbControl() {
        machine.reset();
        machine.nodes["/dev/video10"].values[V4L2_CID_BRIGHTNESS] = 5;
        device = usb.devices().at(1);
        interface = find();
    }
    std::shared_ptr<UsbInterface> find() {
        Interfaces interfaces;
        EXPECT_EQ(usb.devices().at(1)->interfaces(interfaces), kIOReturnSuccess);
        return interfaces.at(0);
    }
    /// Asks for the brightness, as a request is sent: opened before and closed behind it.
    IOReturn ask(UsbInterface& from) {
        const IOReturn opened = from.open();
        std::uint8_t answer[2] = {};
        IOUSBDevRequest request{0xA1, 0x81, 0x0200, 0x0300, sizeof answer, answer};
        const IOReturn status = from.controlRequest(request);
        EXPECT_EQ(opened == 0, status == 0 || status == machine.nodes["/dev/video10"].error);
        EXPECT_EQ(answer[0], status == 0 ? 5 : 0);
        EXPECT_EQ(from.close(), kIOReturnSuccess);
        return opened == 0 ? status : opened;
    }
    std::size_t openFiles() const { return machine.open.size(); }

    FakeMachine& machine = FakeMachine::get();
    KeptNode node;
    LinuxUsb usb{node};
    std::shared_ptr<UsbDevice> device;
    std::shared_ptr<UsbInterface> interface;
};

TEST_F(UsbControl, GoesThroughTheFirstNodeThatDeliversVideo) {
    EXPECT_EQ(ask(*interface), kIOReturnSuccess);
    EXPECT_THAT(machine.open, testing::ElementsAre(testing::Pair(testing::_, "/dev/video10")));
}

TEST_F(UsbControl, KeepsOneNodeOpenUntilAnotherIsOpenedOrItsCameraLeaves) {
    EXPECT_EQ(ask(*interface), kIOReturnSuccess);
    machine.change("/dev/video10 error=EIO");  // which nobody opens again
    EXPECT_EQ(ask(*interface), kIOReturnSuccess);
    machine.change("/dev/video10 error=");
    EXPECT_EQ(ask(*find()), kIOReturnSuccess);
    EXPECT_EQ(openFiles(), 1U);

    LinuxCapture capture(node);
    capture.devices();
    machine.change(camera + "/1-2:1.0/video9 event=remove");
    capture.devices();
    EXPECT_EQ(openFiles(), 1U);
    machine.change(camera + "/1-2:1.0/video10 event=remove");
    capture.devices();
    EXPECT_EQ(openFiles(), 0U);
    EXPECT_EQ(ask(*interface), kIOReturnSuccess);
}

TEST_F(UsbControl, ClosesTheNodeWhenARequestFindsThatTheCameraHasGone) {
    EXPECT_EQ(ask(*interface), kIOReturnSuccess);
    for (const int error : {EPIPE, ENODEV}) {
        machine.nodes["/dev/video10"].error = error;
        EXPECT_EQ(openFiles(), 1U);
        EXPECT_EQ(ask(*interface), error);
    }
    EXPECT_EQ(openFiles(), 0U);
}

TEST_F(UsbControl, ACameraThatWasPluggedInAgainIsAnotherOne) {
    EXPECT_EQ(device->createPlugIn(), kIOReturnSuccess);
    EXPECT_EQ(device->queryInterface(), kIOReturnSuccess);
    EXPECT_EQ(interface->createPlugIn(), kIOReturnSuccess);
    EXPECT_EQ(interface->queryInterface(), kIOReturnSuccess);
    machine.change(camera + " devnum=8");
    EXPECT_EQ(device->createPlugIn(), ENODEV);
    EXPECT_EQ(device->queryInterface(), ENODEV);
    EXPECT_EQ(interface->createPlugIn(), ENODEV);
    EXPECT_EQ(interface->queryInterface(), ENODEV);
    Interfaces none;
    EXPECT_EQ(device->interfaces(none), ENODEV);
    EXPECT_EQ(ask(*interface), ENODEV);
    EXPECT_THAT(none, IsEmpty());
    EXPECT_EQ(openFiles(), 0U);
}

/// Each row of opened.txt changes the machine, and says what opening the interface comes to.
TEST_F(UsbControl, OpenSaysWhyThereIsNoNode) {
    for (const Row& row : readRows("opened.txt")) {
        machine.reset();
        const auto fresh = find();
        for (const std::string& line : row.given)
            machine.change(line);
        const IOReturn status = fresh->open();
        EXPECT_EQ(status == 0 ? "opened" : strerrorname_np(status), row.expected.at(0))
            << inLines(row.given);
        EXPECT_EQ(openFiles(), status == 0 ? 1U : 0U);
        node.close();
    }
}

}  // namespace
}  // namespace platform
