#include "virtualcam/VirtualCamera.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <chrono>
#include <ranges>

#include "virtualcam/DemoBus.h"

namespace virtualcam {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Bytes = std::vector<std::uint8_t>;

constexpr ControlId kBrightness{kProcessingUnit, PU_BRIGHTNESS_CONTROL};
constexpr ControlId kTemperature{kProcessingUnit, PU_WHITE_BALANCE_TEMPERATURE_CONTROL};
constexpr ControlId kAutoWhite{kProcessingUnit, PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL};
constexpr ControlId kAeMode{kCameraTerminal, CT_AE_MODE_CONTROL};
constexpr ControlId kExposure{kCameraTerminal, CT_EXPOSURE_TIME_ABSOLUTE_CONTROL};
constexpr ControlId kFocus{kCameraTerminal, CT_FOCUS_ABSOLUTE_CONTROL};
constexpr ControlId kAutoFocus{kCameraTerminal, CT_FOCUS_AUTO_CONTROL};
constexpr ControlId kZoom{kCameraTerminal, CT_ZOOM_ABSOLUTE_CONTROL};
constexpr ControlId kPanTilt{kCameraTerminal, CT_PANTILT_ABSOLUTE_CONTROL};
constexpr ControlId kRedGain{kVendorUnit, XU_RGAIN};
constexpr ControlId kStyle{kVendorUnit, XU_STYLE};
constexpr ControlId kVersion{kVendorUnit, XU_VERSION};
constexpr ControlId kRestore{kVendorUnit, XU_RESTORE};
constexpr ControlId kErrorCode{kInterfaceUnit, VC_REQUEST_ERROR_CODE_CONTROL};

IOUSBDevRequest setup(std::uint8_t type, std::uint8_t code, ControlId id, Bytes& data) {
    return {type,
            code,
            static_cast<std::uint16_t>(id.selector << 8),
            static_cast<std::uint16_t>(id.unit << 8),
            static_cast<std::uint16_t>(data.size()),
            data.data(),
            0};
}

/// A sane camera; each test breaks one thing.
class CameraTest : public testing::Test {
  protected:
    IOReturn send(std::uint8_t type, std::uint8_t code, ControlId id, Bytes data) {
        IOUSBDevRequest request = setup(type, code, id, data);
        return camera.controlRequest(request);
    }

    IOReturn write(ControlId id, const Bytes& data) { return send(0x21, SET_CUR, id, data); }

    /// The bytes that the camera answers, none when it refuses; `room` as the host offers it.
    Bytes read(ControlId id, std::uint8_t code = GET_CUR, std::size_t room = 32) {
        Bytes data(room, 0xEE);
        IOUSBDevRequest request = setup(0xA1, code, id, data);
        status = camera.controlRequest(request);
        data.resize(request.wLenDone);
        return data;
    }

    RequestError lastError() { return static_cast<RequestError>(read(kErrorCode).at(0)); }

    /// Has the camera deliver pictures, without looking at them.
    void watch(int pictures) {
        for (int i = 0; i < pictures; ++i)
            camera.nextPicture();
    }

    VirtualCamera camera{studioCamera()};
    IOReturn status = 0;
};

TEST_F(CameraTest, KeepsWhatItIsGiven) {
    EXPECT_EQ(write(kBrightness, {3, 0}), 0);
    EXPECT_THAT(read(kBrightness), ElementsAre(3, 0));
    EXPECT_EQ(camera.picture().brightness, 3);

    EXPECT_EQ(write(kRedGain, {0xFD, 0xFF}), 0);
    EXPECT_THAT(read(kRedGain), ElementsAre(0xFD, 0xFF));
    EXPECT_EQ(camera.picture().redGain, -3);

    EXPECT_EQ(write(kPanTilt, {0xA0, 0x8C, 0, 0, 0xE0, 0xE3, 0xFF, 0xFF}), 0);
    EXPECT_EQ(camera.picture().pan, 36000);
    EXPECT_EQ(camera.picture().tilt, -7200);
    EXPECT_THAT(read(kPanTilt), ElementsAre(0xA0, 0x8C, 0, 0, 0xE0, 0xE3, 0xFF, 0xFF));
}

TEST_F(CameraTest, TellsItsLimits) {
    EXPECT_THAT(read(kRedGain, GET_MIN), ElementsAre(0xF6, 0xFF));
    EXPECT_THAT(read(kRedGain, GET_MAX), ElementsAre(10, 0));
    EXPECT_THAT(read(kRedGain, GET_LEN, 24), ElementsAre(2, 0));
    EXPECT_THAT(read(kStyle, GET_LEN, 2), ElementsAre(1, 0));
    EXPECT_THAT(read(kTemperature, GET_DEF), ElementsAre(0x64, 0x19));  // 6500 K
    EXPECT_THAT(read(kPanTilt, GET_RES), ElementsAre(0x10, 0x0E, 0, 0, 0x10, 0x0E, 0, 0));
    EXPECT_THAT(read(kAeMode, GET_RES), ElementsAre(1 | 8));
    EXPECT_THAT(read(kVersion, GET_INFO), ElementsAre(kInfoGet));
    EXPECT_THAT(read(kRestore, GET_INFO), ElementsAre(kInfoSet));
    const Bytes version = read(kVersion);
    EXPECT_STREQ(reinterpret_cast<const char*>(version.data()), "V9.2.4");
}

TEST_F(CameraTest, EveryDefaultIsLegalAndEveryNumberKeepsItsEnds) {
    for (const ControlRow& row : camera.model().controls) {
        SCOPED_TRACE(testing::Message() << +row.id.unit << ", " << +row.id.selector);
        const bool free = !row.automatic && row.kind != ControlKind::text;
        for (const std::uint8_t code : {GET_DEF, GET_MIN, GET_MAX}) {
            const Bytes value = read(row.id, code);
            if (status != 0 || !free)
                continue;
            EXPECT_EQ(write(row.id, value), 0);
            EXPECT_EQ(read(row.id), value);
        }
    }
}

TEST_F(CameraTest, RefusesWhatIsOutOfRange) {
    const std::vector<std::pair<ControlId, Bytes>> refused{
        {kBrightness, {0x00, 0x01}},
        {kBrightness, {0x00, 0xFF}},
        {kRedGain, {0xF5, 0xFF}},
        {kRedGain, {0xFD, 0x00}},  // 253, not -3
        {kAutoWhite, {2}},
        {kAeMode, {0}},
        {kAeMode, {4}},                                 // a mode that it does not have
        {kAeMode, {1 | 8}},                             // two modes at once
        {kPanTilt, {1, 0, 0, 0, 0, 0, 0, 0}},           // between two steps
        {kPanTilt, {0, 0, 0, 0, 0xF0, 0x2F, 0x03, 0}},  // tilt beyond its end, in reach of pan
        {kRestore, {0}},
    };
    for (const auto& [id, data] : refused) {
        SCOPED_TRACE(testing::PrintToString(data));
        const Bytes before = read(id);
        EXPECT_EQ(write(id, data), EPIPE);
        EXPECT_EQ(lastError(), RequestError::outOfRange);
        EXPECT_EQ(read(id), before);
    }
}

TEST_F(CameraTest, RefusesWhatMakesNoRequest) {
    const auto refuses = [&](IOReturn result, RequestError error) {
        EXPECT_EQ(result, EPIPE);
        EXPECT_EQ(lastError(), error);
    };
    refuses(write({2, 2}, {1, 0}), RequestError::invalidUnit);
    refuses(write({kProcessingUnit, 12}, {1, 0}), RequestError::invalidControl);
    refuses(write({kVendorUnit, 8}, {1}), RequestError::invalidControl);
    refuses(write(kBrightness, {1}), RequestError::invalidRequest);
    refuses(write(kBrightness, {1, 0, 0}), RequestError::invalidRequest);
    refuses(write(kVersion, Bytes(24)), RequestError::invalidRequest);
    refuses(send(0xA1, GET_CUR, kBrightness, Bytes(1)), RequestError::invalidRequest);
    refuses(send(0xA1, GET_CUR, kRestore, Bytes(1)), RequestError::invalidRequest);
    refuses(send(0xA1, GET_LEN, kBrightness, Bytes(2)), RequestError::invalidRequest);
    refuses(send(0xA1, GET_MIN, kAutoWhite, Bytes(1)), RequestError::invalidRequest);
    refuses(send(0xA1, SET_CUR, kBrightness, {1, 0}), RequestError::invalidRequest);
    refuses(send(0x21, GET_CUR, kBrightness, Bytes(2)), RequestError::invalidRequest);
    refuses(send(0x22, SET_CUR, kBrightness, {1, 0}), RequestError::invalidRequest);
    EXPECT_THAT(read(kBrightness), ElementsAre(7, 0));
    EXPECT_EQ(lastError(), RequestError::none);

    Bytes data{1, 0};
    IOUSBDevRequest request = setup(0x21, SET_CUR, kBrightness, data);
    request.wIndex |= 1;  // the streaming interface has no such control
    refuses(camera.controlRequest(request), RequestError::invalidRequest);
}

/// What an automatic mode holds: which control, how the mode is set either way, a legal value.
struct HeldControl {
    ControlId held;
    ControlId mode;
    std::uint8_t automatic;
    std::uint8_t manual;
    Bytes value;
};

class AutomaticTest : public CameraTest, public testing::WithParamInterface<HeldControl> {};

TEST_P(AutomaticTest, HoldsItsControlAndLetsItGo) {
    const auto& [held, mode, automatic, manual, value] = GetParam();
    EXPECT_EQ(write(mode, {automatic}), 0);
    EXPECT_EQ(write(held, value), EPIPE);
    EXPECT_EQ(lastError(), RequestError::wrongState);
    EXPECT_NE(read(held, GET_INFO).at(0) & kInfoDisabled, 0);

    EXPECT_EQ(write(mode, {manual}), 0);
    EXPECT_EQ(read(held, GET_INFO).at(0) & kInfoDisabled, 0);
    EXPECT_EQ(write(held, value), 0);
    watch(30);
    EXPECT_EQ(read(held), value) << "a free control stays";

    EXPECT_EQ(write(mode, {automatic}), 0);
    EXPECT_EQ(read(held), value) << "the mode moves it only as pictures come";
    watch(1);
    const Bytes started = read(held);
    EXPECT_NE(started, value);
    watch(200);
    const Bytes settled = read(held);
    EXPECT_NE(settled, started);
    EXPECT_EQ(write(mode, {manual}), 0);
    watch(10);
    EXPECT_EQ(read(held), settled) << "the last automatic value is where manual begins";
}

INSTANTIATE_TEST_SUITE_P(All, AutomaticTest,
                         testing::Values(HeldControl{kTemperature, kAutoWhite, 1, 0, {0xF0, 0x0A}},
                                         HeldControl{kFocus, kAutoFocus, 1, 0, {200, 0}},
                                         HeldControl{kExposure, kAeMode, 8, 1, {5, 0, 0, 0}}));

TEST_F(CameraTest, RestoresTheVendorsDefaults) {
    EXPECT_EQ(write(kBrightness, {1, 0}), 0);
    EXPECT_EQ(write(kAutoWhite, {0}), 0);
    EXPECT_EQ(write(kStyle, {3}), 0);
    EXPECT_EQ(write(kRestore, {1}), 0);
    EXPECT_THAT(read(kBrightness), ElementsAre(7, 0));
    EXPECT_THAT(read(kAutoWhite), ElementsAre(1));
    EXPECT_THAT(read(kStyle), ElementsAre(6)) << "the vendor's default is not the standard one";
}

TEST_F(CameraTest, SwitchesStreamsWhenItStarts) {
    constexpr ControlId kH264{kVendorUnit, XU_H264_SWITCH};
    ASSERT_TRUE(camera.streams().h264);
    EXPECT_EQ(write(kH264, {0}), 0);
    EXPECT_THAT(read(kH264), ElementsAre(0));
    EXPECT_TRUE(camera.streams().h264);
    camera.powerOn();
    EXPECT_FALSE(camera.streams().h264);
}

TEST_F(CameraTest, OlderCameraHasNoLensControls) {
    VirtualCamera classic(classicCamera());
    for (const ControlId id : {kZoom, kFocus, kAutoFocus, kPanTilt}) {
        Bytes data(8);
        IOUSBDevRequest request = setup(0xA1, GET_CUR, id, data);
        EXPECT_EQ(classic.controlRequest(request), EPIPE);
    }
    Bytes data(8);
    IOUSBDevRequest request = setup(0xA1, GET_CUR, kAeMode, data);
    EXPECT_EQ(classic.controlRequest(request), 0);
}

TEST_F(CameraTest, RecordsEveryRequest) {
    write(kBrightness, {3, 0});
    write(kBrightness, {0, 1});
    read(kStyle, GET_CUR, 4);
    const auto records = camera.requests();
    EXPECT_THAT(records, ElementsAre(RequestRecord{0x21, SET_CUR, 0x0200, 0x0300, 2, {3, 0}, 0},
                                     RequestRecord{0x21, SET_CUR, 0x0200, 0x0300, 2, {0, 1}, EPIPE},
                                     RequestRecord{0xA1, GET_CUR, 0x0D00, 0x1000, 4, {0}, 0}));
    EXPECT_THAT(testing::PrintToString(records.at(0)),
                testing::StartsWith("SET_CUR unit 3 selector 2 length 2: 03 00 -> 0"));
    camera.clearRequests();
    EXPECT_THAT(camera.requests(), IsEmpty());
}

TEST_F(CameraTest, StallsOrCutsOrStretchesOneControl) {
    camera.setFaults({.stalled = {kZoom}});
    EXPECT_THAT(read(kZoom), IsEmpty());
    EXPECT_EQ(status, EPIPE);
    EXPECT_THAT(read(kBrightness), ElementsAre(7, 0));

    camera.setFaults({.lengths = {{kStyle, 2}}});
    EXPECT_THAT(read(kStyle, GET_LEN, 2), ElementsAre(2, 0));
    EXPECT_EQ(write(kStyle, {5}), EPIPE);
    EXPECT_EQ(write(kStyle, {5, 0}), 0);
    EXPECT_THAT(read(kStyle), ElementsAre(5, 0));

    camera.setFaults({.shortReads = {{kBrightness, 1}}});
    EXPECT_THAT(read(kBrightness, GET_CUR, 2), ElementsAre(7));
    EXPECT_EQ(status, 0);
    camera.setFaults({});
    EXPECT_THAT(read(kBrightness), ElementsAre(7, 0));
}

TEST_F(CameraTest, AnswersLateOrNotAtAll) {
    std::vector<std::chrono::milliseconds> waits;
    camera.setWait([&](std::chrono::milliseconds time) { waits.push_back(time); });
    camera.setFaults({.delay = std::chrono::milliseconds(40)});
    EXPECT_EQ(write(kBrightness, {3, 0}), 0);
    camera.setFaults({.delay = std::chrono::seconds(9)});
    EXPECT_EQ(write(kBrightness, {4, 0}), ETIMEDOUT);
    EXPECT_THAT(waits, ElementsAre(std::chrono::milliseconds(40), kControlTimeout));
    EXPECT_EQ(camera.picture().brightness, 3);
}

TEST_F(CameraTest, VanishesForGood) {
    int told = 0;
    camera.setVanished([&] { ++told; });
    camera.setFaults({.vanishesAfter = 1});
    EXPECT_EQ(write(kBrightness, {3, 0}), 0);
    EXPECT_EQ(write(kBrightness, {4, 0}), ENODEV);
    camera.setFaults({});
    EXPECT_EQ(write(kBrightness, {4, 0}), ENODEV);
    EXPECT_EQ(told, 1);
    camera.powerOn();
    EXPECT_THAT(read(kBrightness), ElementsAre(3, 0)) << "settings outlive the plug";
}

}  // namespace
}  // namespace virtualcam
