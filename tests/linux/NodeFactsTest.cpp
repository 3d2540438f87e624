#include "platform/linux/NodeFacts.h"

#include <gmock/gmock.h>

namespace platform {
namespace {

NodeFacts camera() {
    NodeFacts facts;
    facts.syspath = "/sys/devices/usb1/1-2/1-2.3/1-2.3:1.0/video4linux/video0";
    facts.sysname = "video0";
    facts.devnode = "/dev/video0";
    facts.hasVideo = true;
    facts.parent = "usb:1-2.3:1.0";
    facts.driverName = "HD Camera: HD Camera";
    facts.usb = UsbFacts{"1-2.3", 0x0ABC, 0x1234, "HD Camera", 0};
    return facts;
}

TEST(UsbLocations, PackTheBusAndThePorts) {
    const std::pair<const char*, std::uint32_t> exact[] = {
        {"usb1", 0x01000000},    {"1-2", 0x01200000},           {"1-2.3.4", 0x01234000},
        {"20-15.1", 0x14F10000}, {"2-1.2.3.4.5.6", 0x02123456}, {"255-1", 0xFF100000},
    };
    for (const auto& [name, id] : exact) {
        EXPECT_EQ(usbLocation(name).id, id) << name;
        EXPECT_TRUE(usbLocation(name).exact) << name;
    }
}

TEST(UsbLocations, TellWhatDoesNotFit) {
    EXPECT_EQ(usbLocation("1-16.2").id, 0x01F20000U);
    EXPECT_FALSE(usbLocation("1-16.2").exact);
    EXPECT_EQ(usbLocation("1-1.2.3.4.5.6.7").id, 0x01123456U);
    EXPECT_FALSE(usbLocation("1-1.2.3.4.5.6.7").exact);
    for (const char* garbage : {"", "usb", "usbx", "usb1x", "1", "1-", "1-2.", "1-.2", "1-0", "a-b",
                                "1-2:1.0", "256-1", "-1-2", "1-99999999999", "99999999999-1"}) {
        EXPECT_EQ(usbLocation(garbage).id, 0U) << garbage;
        EXPECT_FALSE(usbLocation(garbage).exact) << garbage;
    }
}

TEST(UniqueIdentifiers, OfUsbCamerasEndInTheirIds) {
    NodeFacts facts = camera();
    EXPECT_EQ(uniqueIdentifier(facts), "0x012300000abc1234");
    facts.index = 2;
    EXPECT_EQ(uniqueIdentifier(facts), "0x0123000000020abc1234");
    facts.index = 0;
    facts.usb->function = 1;
    EXPECT_EQ(uniqueIdentifier(facts), "0x0123000001000abc1234");
    facts = camera();
    facts.usb->sysname = "1-17";
    EXPECT_EQ(uniqueIdentifier(facts), "0x01f00000@1-17:0abc1234");
}

TEST(UniqueIdentifiers, OfOtherDevicesNameTheirPlaceAndNoUsbIds) {
    NodeFacts facts = camera();
    facts.hasVideo = false;
    EXPECT_EQ(uniqueIdentifier(facts), "usb:1-2.3:1.0:0:sound");
    facts = camera();
    facts.usb.reset();
    facts.parent = "pci:0000:00:05.0";
    EXPECT_EQ(uniqueIdentifier(facts), "pci:0000:00:05.0:0:video4linux");
    facts.index = 1;
    EXPECT_EQ(uniqueIdentifier(facts), "pci:0000:00:05.0:1:video4linux");
}

TEST(DisplayNames, AreTheProducts) {
    NodeFacts facts = camera();
    EXPECT_EQ(displayName(facts), "HD Camera");
    facts.index = 2;
    facts.sysname = "video2";
    EXPECT_EQ(displayName(facts), "HD Camera (video2)");
    facts = camera();
    facts.usb->product = " \t";
    EXPECT_EQ(displayName(facts), "HD Camera: HD Camera");
    facts.driverName.clear();
    EXPECT_EQ(displayName(facts), "video0");
    facts.usb.reset();
    facts.driverName = " Capture Card ";
    EXPECT_EQ(displayName(facts), "Capture Card");
}

}  // namespace
}  // namespace platform
