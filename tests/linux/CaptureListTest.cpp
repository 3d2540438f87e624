#include <gmock/gmock.h>

#include <QCoreApplication>
#include <fstream>
#include <iomanip>

#include "platform/linux/devices/KeptNode.h"
#include "platform/linux/devices/LinuxCapture.h"
#include "platform/linux/devices/NodeFacts.h"
#include "tests/linux/FakeMachine.h"
#include "tests/linux/Rows.h"

namespace platform {
namespace {

/// Each row of captures.txt changes the machine, and says what is listed then.
TEST(CaptureList, HasTheNodesThatDeliverVideoOrSoundAndTellsThemApart) {
    for (const Row& row : readRows("captures.txt")) {
        FakeMachine::get().reset();
        for (const std::string& line : row.given)
            FakeMachine::get().change(line);
        KeptNode node;
        LinuxCapture capture(node);
        std::vector<std::string> listed;
        for (const auto& device : capture.devices())
            listed.push_back(device->uniqueID() + ' ' + device->localizedName());
        EXPECT_EQ(inLines(listed), inLines(row.expected)) << "with\n" << inLines(row.given);
        EXPECT_THAT(FakeMachine::get().open, testing::IsEmpty());
    }
}

const std::string bus = "/sys/pci/00:14.0/usb1/";

/// Plugs a camera into a port: `number` is the port's and the node's.
void plug(int number, const std::string& product, const std::string& more = "") {
    const std::string path = bus + "1-" + std::to_string(number);
    FakeMachine::get().change(path + " subsystem=usb devtype=usb_device product=" + product);
    FakeMachine::get().change(path + "/video" + std::to_string(number) +
                              " subsystem=video4linux ID_V4L_CAPABILITIES=:capture: " + more);
}

struct Listener : CaptureListener {
    void arrived(std::shared_ptr<CaptureDevice> device) override { hear("+", *device); }
    void left(std::shared_ptr<CaptureDevice> device) override { hear("-", *device); }
    std::function<void(std::string, const CaptureDevice&)> hear;
};

TEST(CaptureList, FollowsEachNodeAndMakesUpForLostEvents) {
    FakeMachine& machine = FakeMachine::get();
    machine.reset();
    machine.change(bus + "1-2 gone");
    plug(1, "A");
    KeptNode node;
    LinuxCapture capture(node);
    const auto names = [&] {
        std::string all;
        for (const auto& device : capture.devices())
            all += device->localizedName() + " ";
        return all;
    };
    EXPECT_EQ(names(), "A ");
    int argc = 0;
    const QCoreApplication application(argc, nullptr);
    std::string heard;
    Listener listener;
    listener.hear = [&](const std::string& sign, const CaptureDevice& device) {
        heard += sign + device.localizedName() + ": " + names();
    };
    capture.setListener(&listener);
    plug(2, "B", "event=add");
    plug(1, "A", "event=change");
    machine.change("udev event=EINTR");
    machine.change(bus + "1-9/metadata event=remove");
    plug(3, "C", "event=add");
    machine.change(bus + "1-1/video1 event=remove");
    machine.change(bus + "1-1 gone");
    EXPECT_EQ(names(), "A ");  // until they are announced
    while (!machine.events.empty())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    EXPECT_EQ(heard, "+B: A B +C: A B C -A: B C ");
    capture.setListener(nullptr);
    // What was in the queue behind a loss is older than the new look: C has come back since.
    machine.change("udev event=ENOBUFS");
    plug(1, "A", "event=add");
    machine.change(bus + "1-1 gone");
    machine.change(bus + "1-3/video3 event=remove");
    plug(2, "other");
    plug(4, "D");
    EXPECT_EQ(names(), "C other D ");
}

TEST(CaptureList, ADeviceThatCannotBeOpenedSaysWhy) {
    FakeMachine& machine = FakeMachine::get();
    machine.reset();
    machine.change(bus + "1-2/card1/pcmC1D0c subsystem=sound");
    KeptNode node;
    LinuxCapture capture(node);
    const auto devices = capture.devices();
    std::string error;
    EXPECT_NE(devices.at(0)->open(error), nullptr);
    machine.change("/dev/video10 error=EACCES");
    EXPECT_EQ(devices.at(0)->open(error), nullptr);
    EXPECT_EQ(error, "There is no permission to use the camera at /dev/video10.");
    machine.change("/dev/video10 gone");
    EXPECT_EQ(devices.at(0)->open(error), nullptr);
    EXPECT_EQ(error, "The camera at /dev/video10 is gone.");
    EXPECT_EQ(devices.at(1)->open(error), nullptr);
    EXPECT_EQ(error, "This device delivers no video.");
}

/// Each line of nodes.txt is a place on the bus, the numbers of the node and of its function, the
/// product's name and the driver's, and what is made of it all.
TEST(Nodes, AreToldApartByIdentifierAndName) {
    std::ifstream rows(QUELVO_LINUX_TESTS "/nodes.txt");
    const UsbFacts usb{"1-1", 0x0ABC, 0x1234, "", 0};
    NodeFacts facts{"/sys/1-1", "video0", "", true, 0, "usb:1-1", "", usb};
    std::string expected;
    int count = 0;
    while (rows >> facts.usb->sysname >> facts.index >> facts.usb->function >>
               std::quoted(facts.usb->product) >> std::quoted(facts.driverName) >>
               std::quoted(expected) &&
           ++count)
        EXPECT_EQ(uniqueIdentifier(facts) + " " + displayName(facts), expected);
    EXPECT_EQ(count, 15) << "the line after " << expected;
    facts.usb.reset();
    EXPECT_EQ(uniqueIdentifier(facts), "usb:1-1:0:video4linux");
    facts.hasVideo = false;
    EXPECT_EQ(uniqueIdentifier(facts), "usb:1-1:0:sound");
}

}  // namespace
}  // namespace platform
