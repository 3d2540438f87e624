// The control channel as far as the window's scripts do not show it: which camera is opened,
// lengths that no page asks for, and the controls by name.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>

#include "camera/OpenCamera.h"
#include "camera/Transfer.h"
#include "camera/UVCCameraControl.h"
#include "tests/support/CameraFixture.h"

namespace {

using testing::ElementsAre;

class ChannelTest : public testing::Test {
  protected:
    /// Checks that this error, and no other, has been logged since the last call.
    void expectError(const std::string& text) {
        const std::string start = "CameraControl Error: ";
        EXPECT_THAT(fixture_.log().take(start), ElementsAre(start + text));
    }

    CameraFixture fixture_;
};

TEST_F(ChannelTest, OpensByTheLocationOrTheFirstOfTheSameIds) {
    const auto second = fixture_.plugAnother("Second");
    fixture_.bus().plug(std::make_shared<virtualcam::VirtualCamera>(fixture_.camera().model()));
    fixture_.camera().setFaults({.deviceCreatePlugIn = EBUSY});  // which does not end the search
    EXPECT_EQ(UVCCameraControl::initWithLocationID(0x14210000)->setGain(3), 0);
    EXPECT_THAT(second->requests(), testing::SizeIs(1));
    expectError("IOCreatePlugInInterfaceForService returned 0x00000010.");
    fixture_.camera().setFaults({});
    EXPECT_EQ(UVCCameraControl::initWithLocationID(0x15000000)->sendControlRequest({}), 1);
    expectError("No interface to send request");
    fixture_.open();
    EXPECT_EQ(g_uvcCamera->setGain(3), 0);
    EXPECT_THAT(fixture_.requests(), testing::SizeIs(1));
    EXPECT_THAT((std::array{HexToInt(""), HexToInt("0G"), HexToInt("FfFfFfFf"),
                            HexToInt("123456789"), HexToInt("1\xFF"), HexToInt("aAfF")}),
                ElementsAre(0, 23, -1, 0x23456789, -33, 0xAAFF));
}

TEST_F(ChannelTest, TransfersAControlsOwnSizeWhateverLengthWasLeftAndNoOther) {
    fixture_.open();
    const UVCControlInfo* const brightness = findControl(UNIT_PU, PU_BRIGHTNESS_CONTROL);
    std::array<std::uint8_t, 2> buffer{};
    g_dataBuffer = buffer.data();
    for (const std::int32_t left : {1, 0, -1, 24}) {
        g_length = left;
        EXPECT_EQ(g_uvcCamera->getValueForControl(brightness), 0);
        EXPECT_EQ(g_length, 2);
        EXPECT_THAT(buffer, ElementsAre(7, 0));
        EXPECT_THAT(fixture_.requests(), ElementsAre("a1 81 0200 0300 2 | 07 00"));
    }
    for (const std::int32_t length : {-1, 0, 3, 9}) {
        EXPECT_EQ(g_uvcCamera->getDataFor(GET_CUR, length, PU_BRIGHTNESS_CONTROL, 3), 1);
        expectError("No control has " + std::to_string(length) + " bytes");
    }
    for (const std::int32_t length : {-1, 9}) {
        EXPECT_EQ(g_uvcCamera->setData(1, length, PU_GAIN_CONTROL, 3), 1);
        expectError("A control of " + std::to_string(length) + " bytes can't be written");
    }
    g_dataBuffer = nullptr;
    for (const UVCControlInfo* control : {brightness, findControl(UNIT_XU, XU_DRC)}) {
        EXPECT_EQ(g_uvcCamera->getValueForControl(control), 1);
        expectError("There is no buffer to read into");
    }
    EXPECT_EQ(Capture_Transfer(PU_BRIGHTNESS_CONTROL, 2, buffer.data(), 2, UNIT_PU), 0)
        << "neither way";
    EXPECT_THAT(fixture_.requests(), testing::IsEmpty());
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
