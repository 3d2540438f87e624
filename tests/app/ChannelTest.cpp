// The control channel: opening, requests byte by byte, dispatch, and a device that misbehaves.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <limits>
#include <numeric>
#include <ostream>

#include "camera/CameraFunctions.h"
#include "camera/RequestCodes.h"
#include "camera/UVCCameraControl.h"
#include "tests/support/CameraBench.h"

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using virtualcam::ControlId;
using virtualcam::Faults;

constexpr ControlId version{16, XU_VERSION};
constexpr ControlId flipH{16, XU_FLIP_H};
constexpr ControlId brightness{3, PU_BRIGHTNESS_CONTROL};

/// A 64-byte buffer whose bytes count up, so that any byte written where none belongs shows.
struct Canvas {
    std::array<std::uint8_t, 64> bytes{};
    Canvas() { std::iota(bytes.begin(), bytes.end(), std::uint8_t{100}); }

    /// Whether all bytes from `first` on still hold what they were given.
    bool untouchedFrom(std::size_t first) const {
        const Canvas fresh;
        return std::equal(bytes.begin() + static_cast<std::ptrdiff_t>(first), bytes.end(),
                          fresh.bytes.begin() + static_cast<std::ptrdiff_t>(first));
    }
};

class ChannelTest : public testing::Test {
  protected:
    CameraBench bench_;
};

TEST(HexToIntTest, TakesAnyBytesAsDigits) {
    EXPECT_EQ(HexToInt(""), 0);
    EXPECT_EQ(HexToInt("FFFF"), 65535);
    EXPECT_EQ(HexToInt("ffff"), 65535);
    EXPECT_EQ(HexToInt("abcd"), 43981);
    EXPECT_EQ(HexToInt("0G"), 23);
    EXPECT_EQ(HexToInt("123456789"), 0x23456789);
    EXPECT_EQ(HexToInt("FFFFFFFF"), -1);
    EXPECT_EQ(HexToInt("\xC3"), -61 - 48);
}

TEST_F(ChannelTest, OpensByTheLastEightCharacters) {
    EXPECT_EQ(OpenCameraByUniqueID("anything at all e7a14c10"), 0);
    EXPECT_EQ(OpenCameraByUniqueID("E7A14C10"), 0);
    EXPECT_THAT(bench_.log().take(), IsEmpty());
    EXPECT_THAT(bench_.requests(), IsEmpty());  // opening asks the camera nothing
    EXPECT_EQ(g_uvcCamera->setBrightness(3.9F), 0);
    EXPECT_THAT(bench_.requests(), ElementsAre("21 01 0200 0300 2 | 03 00"));
}

TEST_F(ChannelTest, AnIdentifierThatNamesNoCameraLeavesAChannelWithoutInterface) {
    bench_.open();
    const std::string noMatch =
        "CameraControl Error: IOCreatePlugInInterfaceForService returned 0x00000013.";
    for (const auto& [key, line] :
         {std::pair<const char*, std::string>{"0x14200000ffff0000", noMatch},
          {"e7a1 4c10", noMatch},
          {"7a14c10",
           "CameraControl Error: \"7a14c10\" does not end in a vendor and a product id."},
          {"\u00e9\u00e9\u00e9\u00e9",
           "CameraControl Error: \"\u00e9\u00e9\u00e9\u00e9\" does not end in a vendor and a "
           "product id."},
          {"", "CameraControl Error: \"\" does not end in a vendor and a product id."}}) {
        const auto* before = g_uvcCamera.get();
        EXPECT_EQ(OpenCameraByUniqueID(key), 1) << key;
        EXPECT_THAT(bench_.log().take(), ElementsAre(line));
        EXPECT_NE(g_uvcCamera.get(), before);
        EXPECT_EQ(g_uvcCamera->setGain(1), 1);
        EXPECT_THAT(bench_.log().take(),
                    ElementsAre("intval:1", "CameraControl Error: No interface to send request"));
    }
    EXPECT_THAT(bench_.requests(), IsEmpty());
}

struct OpeningFault {
    const char* name;
    Faults faults;
    std::int64_t result;
    std::vector<std::string> log;
};

void PrintTo(const OpeningFault& fault, std::ostream* out) {
    *out << fault.name;
}

class OpeningFaultTest : public testing::TestWithParam<OpeningFault> {};

TEST_P(OpeningFaultTest, IsLoggedOnceAndLeavesAChannelThatFails) {
    CameraBench bench;
    bench.camera().setFaults(GetParam().faults);
    EXPECT_EQ(OpenCameraByUniqueID(bench.uniqueID()), GetParam().result);
    EXPECT_EQ(bench.log().take(), GetParam().log);

    // By location the outcome is the same but for the result.
    const auto byLocation = UVCCameraControl::initWithLocationID(0x14200000);
    EXPECT_EQ(bench.log().take(), GetParam().log);
    for (auto* channel : {g_uvcCamera.get(), byLocation.get()}) {
        EXPECT_EQ(channel->setGain(1), 1);
        EXPECT_THAT(bench.log().take("CameraControl Error: "), SizeIs(1));
    }
    EXPECT_THAT(bench.requests(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    EachStep, OpeningFaultTest,
    testing::Values(OpeningFault{"DevicePlugIn",
                                 {.deviceCreatePlugIn = EBUSY},
                                 1,
                                 {"CameraControl Error: IOCreatePlugInInterfaceForService returned "
                                  "0x00000010."}},
                    OpeningFault{"DeviceInterface",
                                 {.deviceQueryInterface = EACCES},
                                 2,
                                 {"CameraControl Error: QueryInterface returned 13."}},
                    OpeningFault{"NoVideoControl", {.noVideoControl = true}, 0, {}},
                    OpeningFault{"Iterator", {.deviceInterfaces = EIO}, 0, {}},
                    OpeningFault{"InterfacePlugIn",
                                 {.interfaceCreatePlugIn = EBUSY},
                                 0,
                                 {"CameraControl Error: Unable to create a plug-in (00000010)"}},
                    OpeningFault{
                        "InterfaceInterface",
                        {.interfaceQueryInterface = EIO},
                        0,
                        {"CameraControl Error: Couldn\u2019t create a device interface for the "
                         "interface (00000005)"}}),
    [](const auto& suite) { return suite.param.name; });

TEST_F(ChannelTest, OpensByLocation) {
    bench_.plugAnother("Second");
    const auto second = UVCCameraControl::initWithLocationID(0x14210000);
    EXPECT_EQ(second->setGain(3), 0);
    EXPECT_THAT(bench_.requests(), IsEmpty());  // it went to the other camera
    EXPECT_EQ(UVCCameraControl::initWithLocationID(0x15000000)->setGain(3), 1);
    EXPECT_THAT(bench_.log().take("CameraControl"),
                ElementsAre("CameraControl Error: No interface to send request"));
}

TEST_F(ChannelTest, WritesTheLowBytesOfAValue) {
    bench_.open();
    EXPECT_EQ(g_uvcCamera->setData(7, 2, PU_BRIGHTNESS_CONTROL, 3), 0);
    EXPECT_EQ(g_uvcCamera->setData(1, 2, XU_FLIP_H, 16), 0);  // one byte on this camera
    EXPECT_EQ(g_uvcCamera->setData(-1, 2, XU_DRC, 16), 1);    // two bytes; out of range
    EXPECT_EQ(g_uvcCamera->setData((std::int64_t{-7200} << 32) | 36000, 8, 13, 1), 0);
    EXPECT_THAT(bench_.requests(),
                ElementsAre("21 01 0200 0300 2 | 07 00",                            //
                            "a1 85 1900 1000 2 | 01 00", "21 01 1900 1000 1 | 01",  //
                            "a1 85 0c00 1000 2 | 02 00",                            //
                            "21 01 0c00 1000 2 | ff ff !",                          //
                            "21 01 0d00 0100 8 | a0 8c 00 00 e0 e3 ff ff"));
    EXPECT_THAT(bench_.log().take(),
                ElementsAre("CameraControl Error: Control request failed: 00000020",
                            "set:length:8 , -30923764495200"));
}

TEST_F(ChannelTest, ReadsTheVersionInTheLengthThatTheCameraGives) {
    bench_.open();
    Canvas canvas;
    EXPECT_EQ(Capture_Transfer(9, 0, canvas.bytes.data(), 24, UNIT_XU), 0);
    const auto requests = bench_.requests();
    ASSERT_THAT(requests, SizeIs(2));
    EXPECT_EQ(requests[0], "a1 85 0900 1000 24 | 18 00");
    EXPECT_THAT(requests[1], StartsWith("a1 81 0900 1000 24 | 56 39 2e 32 2e 34 00"));
    EXPECT_EQ(g_length, 24);
    EXPECT_STREQ(reinterpret_cast<const char*>(canvas.bytes.data()), "V9.2.4");
    EXPECT_TRUE(canvas.untouchedFrom(24));
    EXPECT_THAT(bench_.log().take(),
                ElementsAre("g_length:24", "bmRequestType2:161 get_data_for:0", "g_length2:24"));

    // A shorter control: the rest of the buffer is cleared, the rest of memory is not.
    bench_.camera().setFaults({.lengths = {{version, 12}}});
    canvas = {};
    EXPECT_EQ(Capture_Transfer(9, 0, canvas.bytes.data(), 24, UNIT_XU), 0);
    EXPECT_EQ(g_length, 12);
    EXPECT_EQ(canvas.bytes[23], 0);
    EXPECT_TRUE(canvas.untouchedFrom(24));
}

TEST_F(ChannelTest, ReadsAStandardControlInItsOwnSize) {
    bench_.open();
    Canvas canvas;
    EXPECT_EQ(Capture_Transfer(2, 0, canvas.bytes.data(), 8, UNIT_PU), 0);
    EXPECT_THAT(bench_.requests(), ElementsAre("a1 81 0200 0300 2 | 07 00"));
    EXPECT_EQ(g_length, 2);
    EXPECT_TRUE(canvas.untouchedFrom(2));
    EXPECT_THAT(bench_.log().take(),
                ElementsAre("g_length:8", "bmRequestType2:161 get_data_for:25956", "g_length2:2"));
}

TEST_F(ChannelTest, DecodesTheBytesOfAWrite) {
    bench_.open();
    const std::array<std::uint8_t, 8> value{0xF9, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
    g_length = 8;  // not looked at for the vendor unit
    EXPECT_EQ(g_uvcCamera->Capture_SetValue(UNIT_XU, XU_COMP_VALUE, value.data()), 0);
    EXPECT_THAT(bench_.writes(), ElementsAre("21 01 0b00 1000 2 | f9 ff"));
    // A count shorter than the control leaves its upper bytes zero.
    g_length = 1;
    EXPECT_EQ(g_uvcCamera->Capture_SetValue(UNIT_PU, PU_GAMMA_CONTROL, value.data()), 0);
    EXPECT_THAT(bench_.writes(), ElementsAre("21 01 0900 0300 2 | f9 00"));
    EXPECT_THAT(bench_.log().take("intval"), ElementsAre("intval:-7", "intval:249"));
}

TEST_F(ChannelTest, AnswersUnknownControlsAndDirectionsWithZero) {
    bench_.open();
    Canvas canvas;
    const auto isValid = [](std::int32_t kind, std::int32_t selector) {
        return findControl(kind, selector) != nullptr;
    };
    int valid = 0;
    for (std::int32_t kind = -1; kind <= 3; ++kind)
        for (std::int32_t selector = -1; selector <= 40; ++selector) {
            valid += isValid(kind, selector) ? 1 : 0;
            if (isValid(kind, selector))
                continue;
            g_length = 1;
            EXPECT_EQ(g_uvcCamera->Capture_GetValue(kind, selector), 0);
            EXPECT_EQ(g_uvcCamera->Capture_SetValue(kind, selector, canvas.bytes.data()), 0);
        }
    EXPECT_EQ(valid, 31);
    EXPECT_FALSE(isValid(UNIT_CT, 3) || isValid(UNIT_XU, 8) || isValid(UNIT_XU, 19));
    EXPECT_EQ(Capture_Transfer(2, 2, canvas.bytes.data(), 8, UNIT_PU), 0);
    EXPECT_THAT(bench_.requests(), IsEmpty());
    EXPECT_THAT(bench_.log().take(), IsEmpty());
    EXPECT_TRUE(canvas.untouchedFrom(0));
}

TEST_F(ChannelTest, WithoutACameraATransferTouchesNothing) {
    Canvas canvas;
    g_length = 5;
    for (const std::int32_t direction : {0, 1, 2})
        EXPECT_EQ(Capture_Transfer(2, direction, canvas.bytes.data(), 8, UNIT_PU), 1);
    EXPECT_EQ(g_length, 5);
    EXPECT_EQ(g_dataBuffer, nullptr);
    EXPECT_TRUE(canvas.untouchedFrom(0));
    EXPECT_THAT(bench_.log().take(), IsEmpty());
}

TEST_F(ChannelTest, ALengthThatDoesNotFitStopsTheTransfer) {
    bench_.open();
    Canvas canvas;
    const auto expectOneError = [&](std::size_t requestsSent) {
        EXPECT_THAT(bench_.log().take("CameraControl Error: "), SizeIs(1));
        EXPECT_THAT(bench_.requests(), SizeIs(requestsSent));
    };
    for (const auto length : std::array<std::uint16_t, 3>{25, 64, 0xFFFF}) {
        bench_.camera().setFaults({.lengths = {{version, length}, {flipH, length}}});
        canvas = {};
        EXPECT_EQ(Capture_Transfer(9, 0, canvas.bytes.data(), 24, UNIT_XU), 1);
        expectOneError(1);
        EXPECT_TRUE(canvas.untouchedFrom(24));
        EXPECT_EQ(g_uvcCamera->setData(1, 2, XU_FLIP_H, 16), 1);
        expectOneError(1);
    }
    bench_.camera().setFaults({});
    canvas = {};
    // No room for the two bytes of a length, for a control's own bytes, for a write's count.
    EXPECT_EQ(Capture_Transfer(9, 0, canvas.bytes.data(), 1, UNIT_XU), 1);
    expectOneError(0);
    EXPECT_EQ(Capture_Transfer(2, 0, canvas.bytes.data(), 1, UNIT_PU), 1);
    expectOneError(0);
    EXPECT_TRUE(canvas.untouchedFrom(0));
    EXPECT_EQ(Capture_Transfer(2, 1, canvas.bytes.data(), 3, UNIT_PU), 1);
    expectOneError(0);
    EXPECT_EQ(g_uvcCamera->setData(1, 9, PU_GAIN_CONTROL, 3), 1);
    expectOneError(0);
}

TEST_F(ChannelTest, AFailingCameraIsLoggedAndNothingIsRetried) {
    bench_.open();
    Canvas canvas;
    bench_.camera().setFaults({.stalled = {version, brightness}});
    EXPECT_EQ(Capture_Transfer(9, 0, canvas.bytes.data(), 24, UNIT_XU), 1);
    EXPECT_EQ(g_uvcCamera->setData(1, 2, XU_VERSION, 16), 1);
    EXPECT_EQ(Capture_Transfer(2, 0, canvas.bytes.data(), 8, UNIT_PU), 1);
    EXPECT_THAT(bench_.requests(),
                ElementsAre("a1 85 0900 1000 24 !", "a1 85 0900 1000 2 !", "a1 81 0200 0300 2 !"));
    EXPECT_THAT(bench_.log().take("CameraControl"),
                Each("CameraControl Error: Control request failed: 00000020"));

    // A short answer counts as one.
    bench_.camera().setFaults({.shortReads = {{brightness, 1}}});
    EXPECT_EQ(Capture_Transfer(2, 0, canvas.bytes.data(), 8, UNIT_PU), 0);
    EXPECT_TRUE(canvas.untouchedFrom(1));

    bench_.camera().setFaults({.interfaceOpen = EBUSY});
    EXPECT_EQ(g_uvcCamera->setGain(1), 1);
    EXPECT_THAT(bench_.log().take("CameraControl"),
                ElementsAre("CameraControl Error: Unable to open interface (00000010)"));

    // No answer at all ends by the driver's time-out; the camera is then pulled out.
    std::chrono::milliseconds waited{0};
    bench_.camera().setWait([&](std::chrono::milliseconds time) { waited += time; });
    bench_.camera().setFaults({.delay = std::chrono::seconds(9)});
    EXPECT_EQ(g_uvcCamera->setGain(1), 1);
    EXPECT_EQ(waited, std::chrono::seconds(5));
    bench_.bus().unplug(bench_.cameraReference());
    EXPECT_EQ(g_uvcCamera->setGain(1), 1);
    EXPECT_THAT(bench_.log().take("CameraControl"),
                ElementsAre("CameraControl Error: Control request failed: 0000006e",
                            "CameraControl Error: Unable to open interface (00000013)"));
}

TEST_F(ChannelTest, NamedControlsDecodeWhatTheyRead) {
    bench_.open();
    UVCCameraControl& camera = *g_uvcCamera;
    EXPECT_EQ(camera.setAutoExposure(false), 0);
    EXPECT_EQ(camera.setExposure(-99.7F), 0);
    EXPECT_EQ(camera.setAutoWhiteBalance(false), 0);
    EXPECT_EQ(camera.setWhiteBalance(6500.9F), 0);
    EXPECT_EQ(camera.setContrast(3), 0);
    EXPECT_EQ(camera.setSaturation(120), 0);
    EXPECT_EQ(camera.setSharpness(4), 0);
    EXPECT_EQ(camera.SetExpCompSwitch(0), 0);
    EXPECT_THAT(bench_.writes(),
                ElementsAre("21 01 0200 0100 1 | 01", "21 01 0400 0100 4 | 64 00 00 00",
                            "21 01 0b00 0300 1 | 00", "21 01 0a00 0300 2 | 64 19",
                            "21 01 0300 0300 2 | 03 00", "21 01 0700 0300 2 | 78 00",
                            "21 01 0800 0300 2 | 04 00", "21 01 0a00 1000 1 | 00"));
    EXPECT_FALSE(camera.getAutoExposure());
    EXPECT_EQ(camera.getExposure(), -99.0F);
    EXPECT_FALSE(camera.getAutoWhiteBalance());
    EXPECT_EQ(camera.getWhiteBalance(), 6500.0F);
    EXPECT_EQ(camera.getContrast(), 3.0F);
    EXPECT_EQ(camera.getSaturation(), 120.0F);
    EXPECT_EQ(camera.getSharpness(), 4.0F);
    EXPECT_EQ(camera.getGain(), 6.0F);
    EXPECT_EQ(camera.getBrightness(), 7.0F);
    EXPECT_EQ(camera.GetExpCompSwitch(), 0);
    camera.setAutoExposure(true);
    camera.setAutoWhiteBalance(true);
    EXPECT_TRUE(camera.getAutoExposure());
    EXPECT_TRUE(camera.getAutoWhiteBalance());

    bench_.requests();
    const UVCControlRange range = camera.getRangeForControl(findControl(UNIT_XU, XU_COMP_VALUE));
    EXPECT_EQ(range.min, -7);
    EXPECT_EQ(range.max, 7);
    EXPECT_THAT(bench_.requests(),
                ElementsAre("a1 85 0b00 1000 8 | 02 00", "a1 82 0b00 1000 2 | f9 ff",
                            "a1 85 0b00 1000 8 | 02 00", "a1 83 0b00 1000 2 | 07 00"));
    EXPECT_EQ(g_dataBuffer, nullptr);  // the slots are the caller's again
    bench_.camera().setFaults({.stalled = {brightness}});
    EXPECT_EQ(camera.getBrightness(), 0.0F);
    EXPECT_EQ(UVCCameraControl::mapValue(5, 0, 10, 100, 200), 150.0F);
    EXPECT_EQ(camera.setGain(std::numeric_limits<float>::infinity()), 0);  // no number: 0
}

}  // namespace
