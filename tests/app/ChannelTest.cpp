// The control channel: opening, requests byte by byte, dispatch, and a device that misbehaves.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <limits>

#include "camera/CameraFunctions.h"
#include "camera/UVCCameraControl.h"
#include "platform/backend/Backends.h"
#include "tests/support/CameraBench.h"

namespace {

using testing::_;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using virtualcam::ControlId;
using virtualcam::Faults;
using Bytes = std::vector<std::uint8_t>;
using Strings = std::vector<std::string>;

constexpr ControlId version{16, XU_VERSION};
constexpr ControlId flipH{16, XU_FLIP_H};
constexpr ControlId brightness{3, PU_BRIGHTNESS_CONTROL};
const std::string refused = "Control request failed: 00000020";

class ChannelTest : public testing::Test {
  protected:
    /// The errors since the last call, without the words that all of them begin with.
    Strings errors() {
        const std::string start = "CameraControl Error: ";
        Strings lines = bench_.log().take(start);
        for (std::string& line : lines)
            line.erase(0, start.size());
        return lines;
    }

    /// Checks that a channel has no interface.
    void expectDead(UVCCameraControl& channel) {
        EXPECT_EQ(channel.setGain(1), 1);
        EXPECT_THAT(errors(), ElementsAre("No interface to send request"));
        EXPECT_THAT(bench_.requests(), IsEmpty());
    }

    /// Transfers what the camera answers, with these faults, to `room` bytes, of which `changed`
    /// are then overwritten; one byte more would be noticed by the sanitizer.
    void reads(UnitKind kind, std::uint32_t selector, std::size_t room, const Faults& faults,
               long changed, const Strings& wire, const std::string& error = {}) {
        Bytes buffer(room, 0xEE);
        transfers(captureRead, kind, selector, buffer, faults, wire, error);
        EXPECT_EQ(std::ranges::count_if(buffer, [](int byte) { return byte != 0xEE; }), changed);
    }

    void writes(UnitKind kind, std::uint32_t selector, Bytes bytes, const Faults& faults,
                const Strings& wire, const std::string& error = {}) {
        transfers(captureWrite, kind, selector, bytes, faults, wire, error);
    }

    CameraBench bench_;

  private:
    void transfers(std::int32_t direction, UnitKind kind, std::uint32_t selector, Bytes& buffer,
                   const Faults& faults, const Strings& wire, const std::string& error) {
        SCOPED_TRACE(testing::Message() << kind << '/' << selector << ' ' << error);
        bench_.camera().setFaults(faults);
        EXPECT_EQ(Capture_Transfer(selector, direction, buffer.data(),
                                   static_cast<std::uint32_t>(buffer.size()),
                                   static_cast<std::uint32_t>(kind)),
                  error.empty() ? 0 : 1);
        EXPECT_EQ(g_dataBuffer, nullptr);  // the slot is the caller's again
        EXPECT_EQ(bench_.requests(), wire);
        EXPECT_EQ(errors(), error.empty() ? Strings{} : Strings{error});
    }
};

TEST(HexToIntTest, TakesAnyBytesAsDigits) {
    for (const auto& [text, value] : {std::pair{"", 0},
                                      {"FFFF", 65535},
                                      {"ffff", 65535},
                                      {"abcd", 43981},
                                      {"0G", 23},
                                      {"123456789", 0x23456789},
                                      {"FFFFFFFF", -1},
                                      {"\xC3", -61 - 48}})
        EXPECT_EQ(HexToInt(text), value) << text;
}

TEST_F(ChannelTest, OpensByTheIdsAtTheEndOrByTheLocation) {
    EXPECT_EQ(OpenCameraByUniqueID("anything at all e7a14c10"), 0);
    EXPECT_EQ(OpenCameraByUniqueID("E7A14C10"), 0);
    EXPECT_THAT(bench_.log().take(), IsEmpty());
    const auto second = bench_.plugAnother("Second");
    EXPECT_EQ(UVCCameraControl::initWithLocationID(0x14210000)->setGain(3), 0);
    EXPECT_THAT(second->requests(), SizeIs(1));
    EXPECT_THAT(bench_.requests(), IsEmpty());  // opening asks the camera nothing
    expectDead(*UVCCameraControl::initWithLocationID(0x15000000));
}

TEST_F(ChannelTest, WhatPreventsAnOpenIsLoggedOnceAndLeavesAChannelWithoutInterface) {
    bench_.open();
    const auto opens = [this](const char* key, std::int64_t result, const Strings& log) {
        EXPECT_EQ(OpenCameraByUniqueID(key), result) << key;
        EXPECT_EQ(errors(), log);
        expectDead(*g_uvcCamera);
    };
    const std::string noMatch = "IOCreatePlugInInterfaceForService returned 0x00000013.";
    const std::string noIds = " does not end in a vendor and a product id.";
    opens("0x1420ffff0000", 1, {noMatch});
    opens("e7a1 4c10", 1, {noMatch});
    opens("7a14c10", 1, {"\"7a14c10\"" + noIds});
    opens("\u00e9\u00e9\u00e9", 1, {"\"\u00e9\u00e9\u00e9\"" + noIds});
    opens("", 1, {"\"\"" + noIds});
    const auto fails = [&](const Faults& faults, std::int64_t result, const Strings& log) {
        bench_.camera().setFaults(faults);
        opens("e7a14c10", result, log);
        const auto byLocation = UVCCameraControl::initWithLocationID(0x14200000);
        EXPECT_EQ(errors(), log);
        expectDead(*byLocation);
    };
    fails({.deviceCreatePlugIn = EBUSY}, 1,
          {"IOCreatePlugInInterfaceForService returned 0x00000010."});
    fails({.deviceQueryInterface = EACCES}, 2, {"QueryInterface returned 13."});
    fails({.noVideoControl = true}, 0, {});
    fails({.deviceInterfaces = EIO}, 0, {});
    fails({.interfaceCreatePlugIn = EBUSY}, 0, {"Unable to create a plug-in (00000010)"});
    fails({.interfaceQueryInterface = EIO}, 0,
          {"Couldn\u2019t create a device interface for the interface (00000005)"});
}

/// A bus with one device of one interface, which counts how often it is closed.
class CountingBus : public platform::UsbBackend,
                    public platform::UsbDevice,
                    public platform::UsbInterface {
  public:
    std::vector<std::shared_ptr<platform::UsbDevice>> devices() override {
        return {{std::shared_ptr<void>(), this}};
    }
    IOReturn interfaces(std::vector<std::shared_ptr<platform::UsbInterface>>& found) override {
        found.emplace_back(std::shared_ptr<void>(), this);
        return 0;
    }
    std::uint16_t vendorID() const override { return 0xE7A1; }
    std::uint16_t productID() const override { return 0x4C10; }
    std::uint32_t locationID() const override { return 0; }
    Descriptor descriptor() const override { return {14, 1, 0, 0}; }
    IOReturn createPlugIn() override { return 0; }
    IOReturn queryInterface() override { return 0; }
    IOReturn open() override { return 0; }
    IOReturn controlRequest(IOUSBDevRequest& /*request*/) override { return 0; }
    IOReturn close() override { return ++closed_ > 0 ? 0 : EIO; }
    int closed() const { return closed_; }

  private:
    int closed_ = 0;
};

TEST_F(ChannelTest, OpeningAnotherCameraClosesTheOldOnesInterface) {
    CountingBus bus;
    platform::installBackends({&bus, &bench_.bus().capture(), &bench_.log()});
    OpenCameraByUniqueID("e7a14c10");
    EXPECT_EQ(bus.closed(), 0);
    OpenCameraByUniqueID("e7a14c10");
    EXPECT_EQ(bus.closed(), 1);
    OpenCameraByUniqueID("no camera");
    EXPECT_EQ(bus.closed(), 2);
}

TEST_F(ChannelTest, ReadsInTheLengthThatTheCameraOrTheTableGives) {
    bench_.open();
    // The rest of a vendor value's buffer is cleared.
    reads(UNIT_XU, XU_VERSION, 14, {.lengths = {{version, 7}}}, 14,
          {"a1 85 0900 1000 14 | 07 00", "a1 81 0900 1000 7 | 56 39 2e 32 2e 34 00"});
    reads(UNIT_PU, PU_BRIGHTNESS_CONTROL, 8, {}, 2, {"a1 81 0200 0300 2 | 07 00"});
    reads(UNIT_PU, PU_BRIGHTNESS_CONTROL, 8, {.shortReads = {{brightness, 1}}}, 1,
          {"a1 81 0200 0300 2 | 07"});
    // A length that does not fit.
    reads(UNIT_XU, XU_VERSION, 9, {.lengths = {{version, 10}}}, 9, {"a1 85 0900 1000 9 | 0a 00"},
          "A control of 10 bytes does not fit a buffer of 9");
    reads(UNIT_XU, XU_VERSION, 1, {}, 0, {}, "No room for a control's length in 1 bytes");
    reads(UNIT_PU, PU_BRIGHTNESS_CONTROL, 1, {}, 0, {},
          "A control of 2 bytes does not fit a buffer of 1");
    reads(UNIT_XU, XU_VERSION, 24, {.stalled = {version}}, 0, {"a1 85 0900 1000 24 !"}, refused);
    reads(UNIT_PU, PU_BRIGHTNESS_CONTROL, 8, {.stalled = {brightness}}, 0, {"a1 81 0200 0300 2 !"},
          refused);
    EXPECT_EQ(g_uvcCamera->getBrightness(), 0.0F);
}

TEST_F(ChannelTest, WritesTheLowBytesOfAValue) {
    bench_.open();
    writes(UNIT_CT, CT_PANTILT_ABSOLUTE_CONTROL, {0xA0, 0x8C, 0, 0, 0xE0, 0xE3, 0xFF, 0xFF}, {},
           {"21 01 0d00 0100 8 | a0 8c 00 00 e0 e3 ff ff"});
    // A vendor value is one signed byte, in the length that the camera gives; for the others a
    // count shorter than the control leaves its upper bytes zero.
    writes(UNIT_XU, XU_FLIP_H, {1}, {}, {"a1 85 1900 1000 2 | 01 00", "21 01 1900 1000 1 | 01"});
    writes(UNIT_XU, XU_COMP_VALUE, {0xF9, 1, 1, 1, 1, 1, 1, 1}, {},
           {"a1 85 0b00 1000 2 | 02 00", "21 01 0b00 1000 2 | f9 ff"});
    writes(UNIT_XU, XU_DRC, {0xFF}, {},
           {"a1 85 0c00 1000 2 | 02 00", "21 01 0c00 1000 2 | ff ff !"}, refused);
    writes(UNIT_PU, PU_GAMMA_CONTROL, {0xF9}, {}, {"21 01 0900 0300 2 | f9 00"});
    writes(UNIT_PU, PU_GAMMA_CONTROL, {1, 1, 1}, {}, {}, "3 bytes do not fit a control of 2");
    writes(UNIT_XU, XU_FLIP_H, {1}, {.lengths = {{flipH, 9}}}, {"a1 85 1900 1000 2 | 09 00"},
           "A control of 9 bytes can't be written");
    writes(UNIT_XU, XU_FLIP_H, {1}, {.stalled = {flipH}}, {"a1 85 1900 1000 2 !"}, refused);
    writes(UNIT_PU, PU_GAIN_CONTROL, {1, 0}, {.interfaceOpen = EBUSY}, {},
           "Unable to open interface (00000010)");
    // No answer at all ends by the driver's time-out.
    std::chrono::milliseconds waited{0};
    bench_.camera().setWait([&](std::chrono::milliseconds time) { waited += time; });
    writes(UNIT_PU, PU_GAIN_CONTROL, {1, 0}, {.delay = std::chrono::seconds(9)},
           {"21 01 0400 0300 2 | 01 00 !"}, "Control request failed: 0000006e");
    EXPECT_EQ(waited, std::chrono::seconds(5));
    EXPECT_EQ(g_uvcCamera->setData(1, 9, PU_GAIN_CONTROL, 3), 1);
    EXPECT_THAT(errors(), ElementsAre("A control of 9 bytes can't be written"));
}

TEST_F(ChannelTest, TracesEveryTransfer) {
    bench_.open();
    bench_.camera().setFaults({.lengths = {{version, 12}}});
    std::array<std::uint8_t, 24> buffer{};
    Capture_Transfer(XU_VERSION, captureRead, buffer.data(), 24, UNIT_XU);
    buffer = {0xF9, 0, 0, 0, 1};
    Capture_Transfer(XU_COMP_VALUE, captureWrite, buffer.data(), 1, UNIT_XU);
    Capture_Transfer(CT_PANTILT_ABSOLUTE_CONTROL, captureWrite, buffer.data(), 8, UNIT_CT);
    EXPECT_THAT(bench_.log().take(),
                ElementsAre("g_length:24", "bmRequestType2:161 get_data_for:0", "g_length2:12",
                            "intval:-7", "intval:4294967545", "set:length:8 , 4294967545", _));
}

TEST_F(ChannelTest, AnswersUnknownControlsAndDirectionsWithZero) {
    Bytes buffer(8, 0xEE);
    EXPECT_EQ(Capture_Transfer(2, captureRead, buffer.data(), 8, UNIT_PU), 1);  // no camera yet
    bench_.open();
    EXPECT_EQ(Capture_Transfer(2, 2, buffer.data(), 8, UNIT_PU), 0);
    int valid = 0;
    for (std::int32_t kind = -1; kind <= 3; ++kind)
        for (std::int32_t selector = -1; selector <= 40; ++selector)
            if (findControl(kind, selector) != nullptr) {
                ++valid;
            } else {
                EXPECT_EQ(g_uvcCamera->Capture_GetValue(kind, selector), 0);
                EXPECT_EQ(g_uvcCamera->Capture_SetValue(kind, selector, buffer.data()), 0);
            }
    EXPECT_EQ(valid, 31);
    EXPECT_EQ(findControl(UNIT_CT, 3), nullptr);
    EXPECT_EQ(findControl(UNIT_XU, 8), nullptr);
    EXPECT_THAT(bench_.requests(), IsEmpty());
    EXPECT_THAT(bench_.log().take(), IsEmpty());
}

TEST_F(ChannelTest, NamedControlsEncodeWhatTheyWriteAndDecodeWhatTheyRead) {
    bench_.open();
    using Channel = UVCCameraControl;
    Channel& camera = *g_uvcCamera;
    for (const bool automatic : {true, false}) {
        bench_.requests();
        EXPECT_EQ(camera.setAutoExposure(automatic) + camera.setAutoWhiteBalance(automatic), 0);
        EXPECT_THAT(bench_.requests(),
                    ElementsAre(automatic ? "21 01 0200 0100 1 | 08" : "21 01 0200 0100 1 | 01",
                                automatic ? "21 01 0b00 0300 1 | 01" : "21 01 0b00 0300 1 | 00"));
        EXPECT_EQ(camera.getAutoExposure(), automatic);
        EXPECT_EQ(camera.getAutoWhiteBalance(), automatic);
    }
    const auto level = [&](auto set, auto get, float value, float kept, const char* wire) {
        bench_.requests();
        EXPECT_EQ((camera.*set)(value), 0);
        EXPECT_EQ((camera.*get)(), kept);
        EXPECT_EQ(bench_.requests().at(0), wire);
    };
    level(&Channel::setExposure, &Channel::getExposure, -99.7F, -99,
          "21 01 0400 0100 4 | 64 00 00 00");
    level(&Channel::setGain, &Channel::getGain, std::numeric_limits<float>::infinity(), 0,
          "21 01 0400 0300 2 | 00 00");
#define LEVEL(name, value, wire) level(&Channel::set##name, &Channel::get##name, value, value, wire)
    LEVEL(WhiteBalance, 6500, "21 01 0a00 0300 2 | 64 19");
    LEVEL(Brightness, 3, "21 01 0200 0300 2 | 03 00");
    LEVEL(Contrast, 4, "21 01 0300 0300 2 | 04 00");
    LEVEL(Saturation, 120, "21 01 0700 0300 2 | 78 00");
    LEVEL(Sharpness, 5, "21 01 0800 0300 2 | 05 00");
#undef LEVEL
    EXPECT_EQ(camera.GetExpCompSwitch(), 1);
    EXPECT_EQ(camera.SetExpCompSwitch(0), 0);
    EXPECT_THAT(bench_.requests(), Contains("21 01 0a00 1000 1 | 00"));
    EXPECT_EQ(camera.GetExpCompSwitch(), 0);
    const UVCControlRange range = camera.getRangeForControl(findControl(UNIT_XU, XU_COMP_VALUE));
    EXPECT_EQ(std::pair(range.min, range.max), std::pair(-7, 7));
    EXPECT_EQ(Channel::mapValue(5, 0, 10, 100, 200), 150.0F);
}

}  // namespace
