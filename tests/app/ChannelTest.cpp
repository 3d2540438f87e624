// The control channel as far as the window's scripts do not show it: opening, lengths that do not
// fit, a device that misbehaves, and the controls by name.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "camera/OpenCamera.h"
#include "camera/Transfer.h"
#include "camera/UVCCameraControl.h"
#include "tests/support/CameraFixture.h"

namespace {

using testing::_;
using testing::ElementsAre;
using testing::IsEmpty;
using virtualcam::Faults;
using Bytes = std::vector<std::uint8_t>;
using Strings = std::vector<std::string>;

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
    EXPECT_EQ(OpenCameraByUniqueID("anything at all E7a14C10"), 0);
    const auto second = fixture_.plugAnother("Second");
    EXPECT_EQ(UVCCameraControl::initWithLocationID(0x14210000)->setGain(3), 0);
    EXPECT_FALSE(second->requests().empty());
    EXPECT_EQ(UVCCameraControl::initWithLocationID(0x15000000)->setGain(3), 1);
    expectError("No interface to send request");
    EXPECT_THAT(fixture_.requests(), IsEmpty());  // opening asks the camera nothing
    EXPECT_THAT((std::array{HexToInt(""), HexToInt("0G"), HexToInt("FfFfFfFf"),
                            HexToInt("123456789"), HexToInt("1\xFF")}),
                ElementsAre(0, 23, -1, 0x23456789, -33));
}

TEST_F(ChannelTest, WhatPreventsAnOpenIsLoggedOnceAndLeavesAChannelWithoutInterface) {
    const auto fails = [this](const Faults& faults, int result, const std::string& error,
                              const char* key = "e7a14c10") {
        SCOPED_TRACE(key + error);
        fixture_.camera().setFaults({});
        fixture_.open();
        fixture_.camera().setFaults(faults);
        EXPECT_EQ(OpenCameraByUniqueID(key), result);
        expectError(error);
        EXPECT_EQ(g_uvcCamera->setGain(1), 1);
        expectError("No interface to send request");
        EXPECT_THAT(fixture_.requests(), IsEmpty());
    };
    fails({}, 1, "IOCreatePlugInInterfaceForService returned 0x00000013.", "e7a14c11");
    fails({}, 1, "\"\u00e9a14c10\" does not end in a vendor and a product id.", "\u00e9a14c10");
    fails({.deviceCreatePlugIn = EBUSY}, 1,
          "IOCreatePlugInInterfaceForService returned 0x00000010.");
    fails({.deviceQueryInterface = EACCES}, 2, "QueryInterface returned 13.");
    fails({.noVideoControl = true}, 0, "");
    fails({.deviceInterfaces = EIO}, 0, "");
    fails({.interfaceCreatePlugIn = EBUSY}, 0, "Unable to create a plug-in (00000010)");
    fails({.interfaceQueryInterface = EIO}, 0,
          "Couldn\u2019t create a device interface for the interface (00000005)");
}

TEST_F(ChannelTest, TransfersKeepToTheRoomAndTheLengthThatThereIs) {
    fixture_.open();
    fixture_.camera().setWait([](auto) {});
    // Behind the buffer the sanitizer watches.
    const auto transfer = [this](std::int32_t direction, const Faults& faults, std::uint32_t kind,
                                 std::uint32_t selector, Bytes buffer, const Strings& wire,
                                 const std::string& error = {}) {
        fixture_.camera().setFaults(faults);
        EXPECT_EQ(Capture_Transfer(selector, direction, buffer.data(),
                                   static_cast<std::uint32_t>(buffer.size()), kind),
                  error.empty() ? 0 : 1);
        EXPECT_EQ(g_dataBuffer, nullptr);  // the room is the caller's again
        EXPECT_EQ(fixture_.requests(), wire);
        expectError(error);
        return buffer;
    };
    constexpr auto read = captureRead;
    constexpr auto write = captureWrite;
    const Bytes version =
        transfer(read, {.lengths = {{{16, XU_VERSION}, 7}}}, UNIT_XU, XU_VERSION, Bytes(14, 0xEE),
                 {"a1 85 0900 1000 14 | 07 00", "a1 81 0900 1000 7 | 56 39 2e 32 2e 34 00"});
    EXPECT_EQ(version.back(), 0) << "the rest of a vendor value's room is cleared";
    transfer(read, {.shortReads = {{{3, PU_BRIGHTNESS_CONTROL}, 1}}}, UNIT_PU,
             PU_BRIGHTNESS_CONTROL, Bytes(8), {"a1 81 0200 0300 2 | 07"});
    transfer(read, {.lengths = {{{16, XU_VERSION}, 10}}}, UNIT_XU, XU_VERSION, Bytes(9),
             {"a1 85 0900 1000 9 | 0a 00"}, "A control of 10 bytes does not fit a buffer of 9");
    transfer(read, {}, UNIT_XU, XU_VERSION, {0}, {}, "No room for a control's length in 1 bytes");
    transfer(read, {}, UNIT_PU, PU_BRIGHTNESS_CONTROL, {0}, {},
             "A control of 2 bytes does not fit a buffer of 1");
    transfer(read, {.stalled = {{16, XU_VERSION}}}, UNIT_XU, XU_VERSION, Bytes(24),
             {"a1 85 0900 1000 24 !"}, "Control request failed: 00000020");
    // What a write does not give of a control is zero.
    transfer(write, {}, UNIT_PU, PU_GAMMA_CONTROL, {0xF9}, {"21 01 0900 0300 2 | f9 00"});
    transfer(write, {}, UNIT_PU, PU_GAMMA_CONTROL, {1, 1, 1}, {},
             "3 bytes do not fit a control of 2");
    transfer(write, {.lengths = {{{16, XU_FLIP_H}, 9}}}, UNIT_XU, XU_FLIP_H, {1},
             {"a1 85 1900 1000 2 | 09 00"}, "A control of 9 bytes can't be written");
    for (const int unit : {3, 16}) {
        EXPECT_EQ(g_uvcCamera->setData(1, 9, PU_GAIN_CONTROL, unit), 1);
        expectError("A control of 9 bytes can't be written");
    }
    transfer(write, {.interfaceOpen = EBUSY}, UNIT_PU, PU_GAIN_CONTROL, {1, 0}, {},
             "Unable to open interface (00000010)");
    // No answer at all ends by the driver's time-out.
    transfer(write, {.delay = std::chrono::seconds(9)}, UNIT_PU, PU_GAIN_CONTROL, {1, 0},
             {"21 01 0400 0300 2 | 01 00 !"}, "Control request failed: 0000006e");
}

TEST_F(ChannelTest, TracesTransfersAndLeavesUnknownOnesOut) {
    Bytes buffer{0xF9, 0, 0, 0, 1, 0, 0, 0};
    EXPECT_EQ(Capture_Transfer(2, captureRead, buffer.data(), 8, UNIT_PU), 1);  // no camera yet
    fixture_.open();
    EXPECT_EQ(Capture_Transfer(2, 2, buffer.data(), 8, UNIT_PU), 0);
    EXPECT_EQ(Capture_Transfer(3, captureWrite, buffer.data(), 8, UNIT_CT), 0);
    Capture_Transfer(XU_COMP_VALUE, captureWrite, buffer.data(), 1, UNIT_XU);
    Capture_Transfer(CT_PANTILT_ABSOLUTE_CONTROL, captureWrite, buffer.data(), 8, UNIT_CT);
    Capture_Transfer(XU_STYLE, captureRead, buffer.data(), 8, UNIT_XU);
    EXPECT_THAT(fixture_.log().take(),
                ElementsAre("intval:-7", "intval:4294967545", "set:length:8 , 4294967545", _,
                            "g_length:8", "bmRequestType2:161 get_data_for:0", "g_length2:1"));
}

TEST_F(ChannelTest, NamedControlsEncodeWhatTheyWriteAndDecodeWhatTheyRead) {
    fixture_.open();
    UVCCameraControl& camera = *g_uvcCamera;
    for (const bool on : {true, false}) {
        EXPECT_EQ(camera.setAutoExposure(on) + camera.setAutoWhiteBalance(on), 0);
        EXPECT_EQ(camera.getAutoExposure() && camera.getAutoWhiteBalance(), on);
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
    const UVCControlRange range = camera.getRangeForControl(findControl(UNIT_XU, XU_COMP_VALUE));
    EXPECT_EQ(std::pair(range.min, range.max), std::pair(-7, 7));
    EXPECT_EQ(UVCCameraControl::mapValue(25, 5, 15, 100, 200), 300) << "nothing is clamped";
}

}  // namespace
