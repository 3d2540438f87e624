// The control channel as far as the window's scripts do not show it: opening, lengths that do not
// fit, a device that misbehaves, and the controls by name.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>

#include "camera/OpenCamera.h"
#include "camera/Transfer.h"
#include "camera/UVCCameraControl.h"
#include "platform/backend/UsbBackend.h"
#include "tests/support/CameraFixture.h"

namespace {

using testing::_;
using testing::ElementsAre;
using testing::IsEmpty;
using virtualcam::Faults;
using Bytes = std::vector<std::uint8_t>;
using Strings = std::vector<std::string>;

/// A device that is its own video-control interface, and counts who holds it when it is asked for.
struct CountingDevice : platform::UsbDevice,
                        platform::UsbInterface,
                        std::enable_shared_from_this<CountingDevice> {
    IOReturn createPlugIn() override { return 0; }
    IOReturn queryInterface() override { return holders = weak_from_this().use_count(), 0; }
    std::uint16_t vendorID() const override { return 0; }
    std::uint16_t productID() const override { return 0; }
    std::uint32_t locationID() const override { return 0; }
    IOReturn interfaces(std::vector<std::shared_ptr<UsbInterface>>& found) override {
        return found.push_back(shared_from_this()), 0;
    }
    Descriptor descriptor() const override { return {CC_VIDEO, SC_VIDEOCONTROL, 0, 0}; }
    IOReturn open() override { return 0; }
    IOReturn controlRequest(IOUSBDevRequest& /*request*/) override { return EPIPE; }
    IOReturn close() override { return 0; }
    long holders = 0;
};

class ChannelTest : public testing::Test {
  protected:
    /// Checks that this, or for an empty text no, error has been logged since the last call.
    void expectError(const std::string& text) {
        const std::string start = "CameraControl Error: ";
        EXPECT_EQ(fixture_.log().take(start), text.empty() ? Strings{} : Strings{start + text});
    }

    CameraFixture fixture_;
};

TEST_F(ChannelTest, OpensByTheIdsAtTheEndOrByTheLocation) {
    const auto second = fixture_.plugAnother("Second");
    EXPECT_EQ(UVCCameraControl::initWithLocationID(0x14210000)->setGain(3), 0);
    EXPECT_EQ(UVCCameraControl::initWithLocationID(0x15000000)->setGain(3), 1);
    expectError("No interface to send request");
    fixture_.camera().setFaults({.deviceCreatePlugIn = EBUSY});  // which does not end the search
    EXPECT_EQ(UVCCameraControl::initWithLocationID(0x14210000)->setGain(3), 0);
    EXPECT_THAT(second->requests(), testing::SizeIs(2));
    expectError("IOCreatePlugInInterfaceForService returned 0x00000010.");
    fixture_.camera().setFaults({});
    EXPECT_THAT(fixture_.requests(), IsEmpty());  // opening asks the camera nothing
    EXPECT_THAT((std::array{HexToInt(""), HexToInt("0G"), HexToInt("FfFfFfFf"),
                            HexToInt("123456789"), HexToInt("1\xFF"), HexToInt("aAfF")}),
                ElementsAre(0, 23, -1, 0x23456789, -33, 0xAAFF));
}

TEST_F(ChannelTest, OpensTheFirstOfTwoDevicesWithTheSameIds) {
    fixture_.bus().plug(std::make_shared<virtualcam::VirtualCamera>(fixture_.camera().model()));
    fixture_.open();
    EXPECT_EQ(g_uvcCamera->setGain(3), 0);
    EXPECT_THAT(fixture_.requests(), testing::SizeIs(1));
}

TEST_F(ChannelTest, LetsGoOfAnInterfacesServiceOnceThereIsAPlugIn) {
    const auto device = std::make_shared<CountingDevice>();
    UVCCameraControl::getControlInferaceWithDeviceInterface(IOUSBDeviceStruct942(device));
    EXPECT_EQ(device->holders, 5) << "the test, the device, the iterator, the plug-in, who asks";
}

TEST_F(ChannelTest, WithoutAnInterfaceEveryRequestIsLoggedOnceAndFailsWhateverElseIsWrong) {
    UVCCameraControl channel;
    g_dataBuffer = nullptr;
    g_length = 77;
    const UVCControlInfo* const brightness = findControl(UNIT_PU, PU_BRIGHTNESS_CONTROL);
    for (const std::int64_t status :
         {std::int64_t{channel.sendControlRequest({})}, std::int64_t{channel.setData(1, 9, 2, 3)},
          std::int64_t{channel.setData(1, 2, XU_DRC, 16)}, channel.getDataFor(GET_CUR, 9, 2, 3),
          channel.getDataFor(GET_CUR, 2, XU_DRC, 16), channel.getValueForControl(brightness),
          std::int64_t{channel.setValue(1, brightness)}}) {
        EXPECT_EQ(status, 1);
    }
    EXPECT_EQ(fixture_.log().take("CameraControl Error: "),
              Strings(7, "CameraControl Error: No interface to send request"));
    EXPECT_EQ(channel.getRangeForControl(brightness).max, 0);
    EXPECT_EQ(fixture_.log().count("CameraControl Error: "), 2);
    EXPECT_EQ(g_length, 77);
}

TEST_F(ChannelTest, AReadAsksForTheControlsOwnSizeWhateverLengthWasLeft) {
    fixture_.open();
    const UVCControlInfo* const brightness = findControl(UNIT_PU, PU_BRIGHTNESS_CONTROL);
    Bytes buffer(2);
    g_dataBuffer = buffer.data();
    for (const std::int32_t left : {1, 0, -1, 24}) {
        g_length = left;
        buffer = {0x34, 0x12};
        EXPECT_EQ(g_uvcCamera->getValueForControl(brightness), 0);
        EXPECT_EQ(g_length, 2);
        EXPECT_EQ(buffer, (Bytes{7, 0}));
        EXPECT_EQ(fixture_.requests(), Strings{"a1 81 0200 0300 2 | 07 00"});
        EXPECT_EQ(fixture_.log().take("bmRequestType2"),
                  Strings{"bmRequestType2:161 get_data_for:4660"});
    }
    for (const std::int32_t length : {-1, 0, 3, 9}) {
        EXPECT_EQ(g_uvcCamera->getDataFor(GET_CUR, length, PU_BRIGHTNESS_CONTROL, 3), 1);
        expectError("No control has " + std::to_string(length) + " bytes");
    }
    EXPECT_EQ(g_uvcCamera->setData(1, 9, PU_GAIN_CONTROL, 3), 1);
    expectError("A control of 9 bytes can't be written");
    g_dataBuffer = nullptr;
    for (const UVCControlInfo* control : {brightness, findControl(UNIT_XU, XU_DRC)}) {
        EXPECT_EQ(g_uvcCamera->getValueForControl(control), 1);
        expectError("There is no buffer to read into");
    }
    EXPECT_THAT(fixture_.requests(), IsEmpty());
}

TEST_F(ChannelTest, WithoutACameraATransferLeavesBothSlotsAlone) {
    std::array<std::uint8_t, 8> buffer{};
    g_dataBuffer = &buffer;
    g_length = 5;
    for (const std::int32_t direction : {captureRead, captureWrite})
        EXPECT_EQ(Capture_Transfer(2, direction, buffer.data(), 8, UNIT_PU), 1);
    EXPECT_EQ(g_dataBuffer, &buffer);
    EXPECT_EQ(g_length, 5);
    fixture_.open();
    EXPECT_EQ(Capture_Transfer(2, 2, buffer.data(), 8, UNIT_PU), 0) << "neither way";
    EXPECT_THAT(fixture_.requests(), IsEmpty());
}

TEST_F(ChannelTest, NamedControlsEncodeWhatTheyWriteAndDecodeWhatTheyRead) {
    fixture_.open();
    UVCCameraControl& camera = *g_uvcCamera;
    for (const bool on : {true, false}) {
        EXPECT_EQ(camera.setAutoExposure(on) + camera.setAutoWhiteBalance(on), 0);
        EXPECT_EQ(camera.getAutoExposure(), on);
        EXPECT_EQ(camera.getAutoWhiteBalance(), on);
        EXPECT_EQ(camera.SetExpCompSwitch(on ? 1 : 0), 0);
        EXPECT_EQ(camera.GetExpCompSwitch(), on ? 1 : 0);
    }
    camera.setExposure(-99.7F);
    camera.setGain(6.9F);
    camera.setBrightness(-3);
    camera.setContrast(4);
    camera.setSaturation(120);
    camera.setSharpness(5);
    camera.setWhiteBalance(6500);
    const virtualcam::PictureState is = fixture_.camera().picture();
    EXPECT_THAT((std::array{is.exposureTime, is.gain, is.brightness, is.contrast, is.saturation,
                            is.sharpness, is.whiteBalance}),
                ElementsAre(100, 6, -3, 4, 120, 5, 6500));
    EXPECT_THAT((std::array{camera.getExposure(), camera.getGain(), camera.getBrightness(),
                            camera.getContrast(), camera.getSaturation(), camera.getSharpness(),
                            camera.getWhiteBalance()}),
                ElementsAre(-99, 6, -3, 4, 120, 5, 6500));
    // Fractions go toward zero, and what is no number or none of 64 bits counts as 0.
    for (const auto& [given, sent] :
         {std::pair{-3.7F, -3}, {2.9F, 2}, {-0.9F, 0}, {NAN, 0}, {INFINITY, 0}, {-1e30F, 0}}) {
        camera.setBrightness(1);
        camera.setBrightness(given);
        EXPECT_EQ(fixture_.camera().picture().brightness, sent) << given;
    }
    for (const std::uint16_t length : std::initializer_list<std::uint16_t>{1, 2}) {
        fixture_.camera().setFaults({.lengths = {{{16, XU_COMP_VALUE}, length}}});
        const auto range = camera.getRangeForControl(findControl(UNIT_XU, XU_COMP_VALUE));
        EXPECT_EQ(std::pair(range.min, range.max), std::pair(-7, 7));
    }
    EXPECT_EQ(UVCCameraControl::mapValue(25, 5, 15, 100, 200), 300) << "nothing is clamped";
}

}  // namespace
