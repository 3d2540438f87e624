// The control channel: opening, requests byte by byte, dispatch, and a device that misbehaves.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <limits>

#include "camera/CameraFunctions.h"
#include "camera/UVCCameraControl.h"
#include "platform/backend/Backends.h"
#include "tests/support/CameraBench.h"

namespace {

using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using virtualcam::ControlId;
using virtualcam::Faults;

constexpr ControlId version{16, XU_VERSION};
constexpr ControlId flipH{16, XU_FLIP_H};
constexpr ControlId brightness{3, PU_BRIGHTNESS_CONTROL};
const std::string refused = "CameraControl Error: Control request failed: 00000020";

class ChannelTest : public testing::Test {
  protected:
    /// Transfers between the camera and a fresh buffer, of which `length` bytes are offered.
    std::int64_t transfer(std::uint32_t selector, std::uint32_t length, UnitKind kind,
                          std::int32_t direction = captureRead) {
        buffer_.fill(0xEE);
        return Capture_Transfer(selector, direction, buffer_.data(), length, kind);
    }

    /// Up to where the transfer has written into the buffer.
    std::size_t touched() const {
        std::size_t end = buffer_.size();
        while (end > 0 && buffer_.at(end - 1) == 0xEE)
            --end;
        return end;
    }

    std::vector<std::string> errors() { return bench_.log().take("CameraControl Error: "); }

    CameraBench bench_;
    std::array<std::uint8_t, 64> buffer_{};
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
    EXPECT_EQ(UVCCameraControl::initWithLocationID(0x15000000)->setGain(3), 1);
    EXPECT_THAT(errors(), ElementsAre("CameraControl Error: No interface to send request"));
}

TEST_F(ChannelTest, AnIdentifierThatNamesNoCameraLeavesAChannelWithoutInterface) {
    bench_.open();
    const std::string noMatch = "IOCreatePlugInInterfaceForService returned 0x00000013.";
    const std::string noIds = " does not end in a vendor and a product id.";
    for (const auto& [key, line] : {std::pair<const char*, std::string>{"0x1420ffff0000", noMatch},
                                    {"e7a1 4c10", noMatch},
                                    {"7a14c10", "\"7a14c10\"" + noIds},
                                    {"\u00e9\u00e9\u00e9", "\"\u00e9\u00e9\u00e9\"" + noIds},
                                    {"", "\"\"" + noIds}}) {
        EXPECT_EQ(OpenCameraByUniqueID(key), 1) << key;
        EXPECT_THAT(bench_.log().take(), ElementsAre("CameraControl Error: " + line));
        EXPECT_EQ(g_uvcCamera->setGain(1), 1);
        EXPECT_THAT(errors(), ElementsAre("CameraControl Error: No interface to send request"));
    }
    EXPECT_THAT(bench_.requests(), IsEmpty());
}

TEST_F(ChannelTest, AFailingStepOfOpeningIsLoggedOnceAndLeavesAChannelThatFails) {
    struct Row {
        Faults faults;
        std::int64_t result;
        std::vector<std::string> log;
    };
    for (const Row& row :
         {Row{{.deviceCreatePlugIn = EBUSY},
              1,
              {"CameraControl Error: IOCreatePlugInInterfaceForService returned 0x00000010."}},
          {{.deviceQueryInterface = EACCES},
           2,
           {"CameraControl Error: QueryInterface returned 13."}},
          {{.noVideoControl = true}, 0, {}},
          {{.deviceInterfaces = EIO}, 0, {}},
          {{.interfaceCreatePlugIn = EBUSY},
           0,
           {"CameraControl Error: Unable to create a plug-in (00000010)"}},
          {{.interfaceQueryInterface = EIO},
           0,
           {"CameraControl Error: Couldn\u2019t create a device interface for the interface "
            "(00000005)"}}}) {
        bench_.camera().setFaults(row.faults);
        EXPECT_EQ(OpenCameraByUniqueID("e7a14c10"), row.result);
        EXPECT_EQ(bench_.log().take(), row.log);
        const auto byLocation = UVCCameraControl::initWithLocationID(0x14200000);
        EXPECT_EQ(bench_.log().take(), row.log);
        EXPECT_EQ(g_uvcCamera->setGain(1) + byLocation->setGain(1), 2);
        EXPECT_THAT(errors(), SizeIs(2));
    }
    EXPECT_THAT(bench_.requests(), IsEmpty());
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

TEST_F(ChannelTest, WritesTheLowBytesOfAValue) {
    bench_.open();
    EXPECT_EQ(g_uvcCamera->setBrightness(3.9F), 0);
    EXPECT_EQ(g_uvcCamera->setData(1, 2, XU_FLIP_H, 16), 0);  // one byte on this camera
    EXPECT_EQ(g_uvcCamera->setData(-1, 2, XU_DRC, 16), 1);    // two bytes; out of range
    EXPECT_EQ(g_uvcCamera->setData((std::int64_t{-7200} << 32) | 36000, 8, 13, 1), 0);
    // For the vendor unit the value is one signed byte, whatever the count says; for the others a
    // count shorter than the control leaves its upper bytes zero.
    buffer_ = {0xF9};
    g_length = 8;
    EXPECT_EQ(g_uvcCamera->Capture_SetValue(UNIT_XU, XU_COMP_VALUE, buffer_.data()), 0);
    g_length = 1;
    EXPECT_EQ(g_uvcCamera->Capture_SetValue(UNIT_PU, PU_GAMMA_CONTROL, buffer_.data()), 0);
    EXPECT_THAT(
        bench_.requests(),
        ElementsAre("21 01 0200 0300 2 | 03 00",                            //
                    "a1 85 1900 1000 2 | 01 00", "21 01 1900 1000 1 | 01",  //
                    "a1 85 0c00 1000 2 | 02 00", "21 01 0c00 1000 2 | ff ff !",
                    "21 01 0d00 0100 8 | a0 8c 00 00 e0 e3 ff ff", "a1 85 0b00 1000 2 | 02 00",
                    "21 01 0b00 1000 2 | f9 ff", "21 01 0900 0300 2 | f9 00"));
    EXPECT_THAT(bench_.log().take(),
                ElementsAre("intval:3", refused, "set:length:8 , -30923764495200", "intval:-7",
                            "intval:249"));
}

TEST_F(ChannelTest, ReadsInTheLengthThatTheCameraOrTheTableGives) {
    bench_.open();
    EXPECT_EQ(transfer(XU_VERSION, 24, UNIT_XU), 0);
    EXPECT_EQ(g_length, 24);
    EXPECT_EQ(touched(), 24U);
    EXPECT_STREQ(reinterpret_cast<const char*>(buffer_.data()), "V9.2.4");
    EXPECT_EQ(bench_.requests().at(0), "a1 85 0900 1000 24 | 18 00");
    EXPECT_THAT(bench_.log().take(),
                ElementsAre("g_length:24", "bmRequestType2:161 get_data_for:0", "g_length2:24"));

    // A shorter control: the rest of the buffer is cleared, the rest of memory is not.
    bench_.camera().setFaults({.lengths = {{version, 12}}});
    EXPECT_EQ(transfer(XU_VERSION, 24, UNIT_XU), 0);
    EXPECT_EQ(g_length, 12);
    EXPECT_EQ(buffer_[23], 0);
    EXPECT_EQ(touched(), 24U);

    EXPECT_EQ(transfer(PU_BRIGHTNESS_CONTROL, 8, UNIT_PU), 0);
    EXPECT_EQ(g_length, 2);
    EXPECT_EQ(touched(), 2U);
    EXPECT_EQ(bench_.requests().back(), "a1 81 0200 0300 2 | 07 00");
    // A short answer counts as one.
    bench_.camera().setFaults({.shortReads = {{brightness, 1}}});
    EXPECT_EQ(transfer(PU_BRIGHTNESS_CONTROL, 8, UNIT_PU), 0);
    EXPECT_EQ(touched(), 1U);
}

TEST_F(ChannelTest, AnswersUnknownControlsAndDirectionsWithZero) {
    EXPECT_EQ(transfer(2, 8, UNIT_PU), 1);  // there is no camera yet
    EXPECT_EQ(g_dataBuffer, nullptr);
    bench_.open();
    int valid = 0;
    for (std::int32_t kind = -1; kind <= 3; ++kind)
        for (std::int32_t selector = -1; selector <= 40; ++selector)
            if (findControl(kind, selector) != nullptr) {
                ++valid;
            } else {
                EXPECT_EQ(g_uvcCamera->Capture_GetValue(kind, selector), 0);
                EXPECT_EQ(g_uvcCamera->Capture_SetValue(kind, selector, buffer_.data()), 0);
            }
    EXPECT_EQ(valid, 31);
    EXPECT_EQ(findControl(UNIT_CT, 3), nullptr);
    EXPECT_EQ(findControl(UNIT_XU, 8), nullptr);
    EXPECT_EQ(transfer(2, 8, UNIT_PU, 2), 0);
    EXPECT_EQ(touched(), 0U);
    EXPECT_THAT(bench_.requests(), IsEmpty());
    EXPECT_THAT(bench_.log().take(), IsEmpty());
}

TEST_F(ChannelTest, ALengthThatDoesNotFitStopsTheTransfer) {
    bench_.open();
    for (const auto length : std::array<std::uint16_t, 3>{25, 64, 0xFFFF}) {
        bench_.camera().setFaults({.lengths = {{version, length}, {flipH, length}}});
        EXPECT_EQ(transfer(XU_VERSION, 24, UNIT_XU), 1);
        EXPECT_LE(touched(), 24U);
        EXPECT_EQ(g_uvcCamera->setData(1, 2, XU_FLIP_H, 16), 1);
        EXPECT_THAT(errors(), SizeIs(2));
        EXPECT_THAT(bench_.requests(), SizeIs(2));  // the questions alone
    }
    bench_.camera().setFaults({});
    // No room for the two bytes of a length, for a control's own bytes, for a write's count.
    EXPECT_EQ(transfer(XU_VERSION, 1, UNIT_XU), 1);
    EXPECT_EQ(touched(), 0U);
    EXPECT_EQ(transfer(PU_BRIGHTNESS_CONTROL, 1, UNIT_PU), 1);
    EXPECT_EQ(touched(), 0U);
    EXPECT_EQ(transfer(PU_BRIGHTNESS_CONTROL, 3, UNIT_PU, captureWrite), 1);
    EXPECT_EQ(g_uvcCamera->setData(1, 9, PU_GAIN_CONTROL, 3), 1);
    EXPECT_THAT(errors(), SizeIs(4));
    EXPECT_THAT(bench_.requests(), IsEmpty());
}

TEST_F(ChannelTest, AFailingCameraIsLoggedAndNothingIsRetried) {
    bench_.open();
    bench_.camera().setFaults({.stalled = {version, brightness}});
    EXPECT_EQ(transfer(XU_VERSION, 24, UNIT_XU), 1);
    EXPECT_EQ(g_uvcCamera->setData(1, 2, XU_VERSION, 16), 1);
    EXPECT_EQ(transfer(PU_BRIGHTNESS_CONTROL, 8, UNIT_PU), 1);
    EXPECT_THAT(bench_.requests(),
                ElementsAre("a1 85 0900 1000 24 !", "a1 85 0900 1000 2 !", "a1 81 0200 0300 2 !"));
    EXPECT_THAT(errors(), AllOf(SizeIs(3), Each(refused)));
    EXPECT_EQ(g_uvcCamera->getBrightness(), 0.0F);
    errors();

    bench_.camera().setFaults({.interfaceOpen = EBUSY});
    EXPECT_EQ(g_uvcCamera->setGain(1), 1);
    // No answer at all ends by the driver's time-out; the camera is then pulled out.
    std::chrono::milliseconds waited{0};
    bench_.camera().setWait([&](std::chrono::milliseconds time) { waited += time; });
    bench_.camera().setFaults({.delay = std::chrono::seconds(9)});
    EXPECT_EQ(g_uvcCamera->setGain(1), 1);
    EXPECT_EQ(waited, std::chrono::seconds(5));
    bench_.bus().unplug(bench_.cameraReference());
    EXPECT_EQ(g_uvcCamera->setGain(1), 1);
    EXPECT_THAT(errors(), ElementsAre("CameraControl Error: Unable to open interface (00000010)",
                                      "CameraControl Error: Control request failed: 0000006e",
                                      "CameraControl Error: Unable to open interface (00000013)"));
}

TEST_F(ChannelTest, NamedControlsDecodeWhatTheyRead) {
    bench_.open();
    UVCCameraControl& camera = *g_uvcCamera;
    EXPECT_EQ(camera.setAutoExposure(false) + camera.setExposure(-99.7F), 0);
    EXPECT_EQ(camera.setAutoWhiteBalance(false) + camera.setWhiteBalance(6500.9F), 0);
    EXPECT_EQ(camera.setContrast(3) + camera.setSaturation(120) + camera.setSharpness(4), 0);
    EXPECT_EQ(camera.SetExpCompSwitch(0), 0);
    EXPECT_THAT(bench_.requests(),
                ElementsAre("21 01 0200 0100 1 | 01", "21 01 0400 0100 4 | 64 00 00 00",
                            "21 01 0b00 0300 1 | 00", "21 01 0a00 0300 2 | 64 19",
                            "21 01 0300 0300 2 | 03 00", "21 01 0700 0300 2 | 78 00",
                            "21 01 0800 0300 2 | 04 00", "a1 85 0a00 1000 2 | 01 00",
                            "21 01 0a00 1000 1 | 00"));
    EXPECT_FALSE(camera.getAutoExposure() || camera.getAutoWhiteBalance());
    const std::array levels{camera.getExposure(),   camera.getWhiteBalance(), camera.getContrast(),
                            camera.getSaturation(), camera.getSharpness(),    camera.getGain()};
    EXPECT_THAT(levels, ElementsAre(-99.0F, 6500.0F, 3.0F, 120.0F, 4.0F, 6.0F));
    EXPECT_EQ(camera.GetExpCompSwitch(), 0);
    camera.setAutoExposure(true);
    camera.setAutoWhiteBalance(true);
    EXPECT_TRUE(camera.getAutoExposure() && camera.getAutoWhiteBalance());
    bench_.requests();
    const UVCControlRange range = camera.getRangeForControl(findControl(UNIT_XU, XU_COMP_VALUE));
    EXPECT_EQ(range.min, -7);
    EXPECT_EQ(range.max, 7);
    EXPECT_THAT(bench_.requests(),
                ElementsAre("a1 85 0b00 1000 8 | 02 00", "a1 82 0b00 1000 2 | f9 ff",
                            "a1 85 0b00 1000 8 | 02 00", "a1 83 0b00 1000 2 | 07 00"));
    EXPECT_EQ(g_dataBuffer, nullptr);  // the slots are the caller's again
    EXPECT_EQ(UVCCameraControl::mapValue(5, 0, 10, 100, 200), 150.0F);
    EXPECT_EQ(camera.setGain(std::numeric_limits<float>::infinity()), 0);  // no number: 0
}

}  // namespace
