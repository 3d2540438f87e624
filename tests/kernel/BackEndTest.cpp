#include <gmock/gmock.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <ostream>

#include "tests/kernel/KernelBench.h"
#include "virtualcam/DemoBus.h"

using namespace virtualcam;  // NOLINT(google-build-using-namespace): names of controls throughout

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

using Bytes = std::vector<std::uint8_t>;

/// Controls by whose value the others are in the user's hands.
const std::vector<std::pair<ControlId, Bytes>> kManualModes{
    {{kCameraTerminal, CT_AE_MODE_CONTROL}, {1}},
    {{kCameraTerminal, CT_FOCUS_AUTO_CONTROL}, {0}},
    {{kProcessingUnit, PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL}, {0}},
};

Bytes littleEndian(std::int64_t value, std::size_t count) {
    Bytes bytes;
    for (std::size_t i = 0; i < count; ++i)
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i) & 0xFF));
    return bytes;
}

/// A legal value of the row that is not its default: the lowest one, negative where there is one.
Bytes testValue(const ControlRow& row) {
    for (const auto& [mode, value] : kManualModes)
        if (mode == row.id)
            return value;
    if (row.kind == ControlKind::trigger)
        return {1};
    const std::int32_t value =
        row.limits.minimum == row.limits.standard ? row.limits.maximum : row.limits.minimum;
    if (!row.secondLimits)
        return littleEndian(value, row.length);
    Bytes both = littleEndian(value, row.length / 2U);
    const Bytes second = littleEndian(row.secondLimits->maximum, row.length / 2U);
    both.insert(both.end(), second.begin(), second.end());
    return both;
}

/// The write of the row's test value as it is to arrive.
RequestRecord wireOf(const ControlRow& row) {
    return {0x21,
            SET_CUR,
            static_cast<std::uint16_t>(row.id.selector << 8),
            static_cast<std::uint16_t>(row.id.unit << 8),
            row.length,
            testValue(row),
            0};
}

/// The writes that reached the camera. Between them the driver reads what a mode has changed.
std::vector<RequestRecord> writes(const VirtualCamera& camera) {
    std::vector<RequestRecord> records = camera.requests();
    std::erase_if(records, [](const RequestRecord& record) { return record.bRequest != SET_CUR; });
    return records;
}

std::string outputOf(const char* command) {
    std::string text;
    FILE* pipe = popen(command, "r");
    std::array<char, 4096> part{};
    while (const std::size_t count = fread(part.data(), 1, part.size(), pipe))
        text.append(part.data(), count);
    pclose(pipe);
    return text;
}

class BackEnds : public testing::Test {
  protected:
    KernelBench bench;
};

}  // namespace

TEST_F(BackEnds, DescriptorsAreWhatTheToolForThemExpects) {
    const auto plugged = bench.plug(studioCamera(), 0);
    const std::string text = outputOf("lsusb -v -d e7a1:4c10 2>&1");
    EXPECT_THAT(text, HasSubstr("Quelvo Studio Camera"));
    EXPECT_THAT(text, HasSubstr("EXTENSION_UNIT"));
    EXPECT_THAT(text, HasSubstr("FORMAT_UNCOMPRESSED"));
    for (const char* complaint : {"arning", "nvalid", "nrecognized", "UNKNOWN", "INVALID", "Junk"})
        EXPECT_THAT(text, Not(HasSubstr(complaint)));
}

TEST_F(BackEnds, CameraIsListedOnceAndMicrophoneIsNoCamera) {
    const auto plugged = bench.plug(studioCamera(), 2);
    std::vector<std::string> cameras;
    std::vector<std::string> others;
    for (const auto& device : bench.capture().devices())
        (device->hasVideo() ? cameras : others).push_back(device->uniqueID());
    // The camera's second node carries metadata, no pictures.
    EXPECT_THAT(cameras, ElementsAre("0x01300000e7a14c10"));
    EXPECT_THAT(others, ElementsAre(testing::EndsWith(":sound")));
    EXPECT_EQ(plugged.device->localizedName(), "Quelvo Studio Camera");
}

TEST_F(BackEnds, UsbDeviceTellsIdsPlaceAndControlInterface) {
    const auto plugged = bench.plug(classicCamera(), 1);
    const auto device = bench.usbDevice(1);
    ASSERT_TRUE(device);
    EXPECT_EQ(device->vendorID(), 0xE7A1);
    EXPECT_EQ(device->productID(), 0x1C05);
    std::vector<std::shared_ptr<platform::UsbInterface>> interfaces;
    ASSERT_EQ(device->interfaces(interfaces), 0);
    ASSERT_EQ(interfaces.size(), 2U);
    EXPECT_EQ(interfaces[0]->descriptor().interfaceClass, 14);
    EXPECT_EQ(interfaces[0]->descriptor().interfaceSubClass, 1);
    EXPECT_EQ(interfaces[1]->descriptor().interfaceSubClass, 2);
}

TEST_F(BackEnds, EveryControlIsWrittenAndReadWithItsExactBytes) {
    const auto plugged = bench.plug(studioCamera(), 0);
    const auto interface = bench.openInterface(0);
    for (auto [mode, value] : kManualModes)
        ASSERT_EQ(transfer(*interface, SET_CUR, mode, value), 0);
    for (const ControlRow& row : plugged.camera().model().controls) {
        SCOPED_TRACE(testing::Message()
                     << "unit " << +row.id.unit << " selector " << +row.id.selector);
        plugged.camera().clearRequests();
        Bytes value = testValue(row);
        if ((row.info & kInfoSet) != 0) {
            ASSERT_EQ(transfer(*interface, SET_CUR, row.id, value), 0);
            EXPECT_THAT(writes(plugged.camera()), ElementsAre(wireOf(row)));
        }
        Bytes answer(row.length);
        if (row.kind == ControlKind::text)
            value = {'V', '9', '.', '2', '.', '4'};
        if ((row.info & kInfoGet) != 0) {
            EXPECT_EQ(transfer(*interface, GET_CUR, row.id, answer), 0);
            value.resize(row.length);
            EXPECT_EQ(answer, value);
        }
    }
}

TEST_F(BackEnds, LengthOfVendorControlIsToldIntoARoomOfAnySize) {
    const auto plugged = bench.plug(studioCamera(), 0);
    const auto interface = bench.openInterface(0);
    Bytes room(24);
    EXPECT_EQ(transfer(*interface, GET_LEN, {kVendorUnit, XU_VERSION}, room), 0);
    EXPECT_THAT(room, ElementsAre(24, 0));
    room.resize(2);
    EXPECT_EQ(transfer(*interface, GET_LEN, {kVendorUnit, XU_DRC}, room), 0);
    EXPECT_THAT(room, ElementsAre(2, 0));
}

TEST_F(BackEnds, RefusalsAndSilenceAreErrorsAndPass) {
    const auto plugged = bench.plug(studioCamera(), 0);
    const auto interface = bench.openInterface(0);
    const ControlId brightness{kProcessingUnit, PU_BRIGHTNESS_CONTROL};
    const ControlId style{kVendorUnit, XU_STYLE};
    Bytes level{3, 0};
    Bytes preset(1);
    // The driver asks for a vendor control's length once, at its first use.
    ASSERT_EQ(transfer(*interface, GET_CUR, style, preset), 0);

    Faults faults;
    faults.stalled = {brightness, style};
    plugged.camera().setFaults(faults);
    EXPECT_NE(transfer(*interface, SET_CUR, brightness, level), 0);
    EXPECT_NE(transfer(*interface, GET_CUR, style, preset), 0);

    faults = {};
    faults.delay = kControlTimeout;
    plugged.camera().setWait([](std::chrono::milliseconds) {});
    plugged.camera().setFaults(faults);
    preset.resize(1);
    EXPECT_EQ(transfer(*interface, GET_CUR, style, preset), ETIMEDOUT);

    plugged.camera().setFaults({});
    level = {3, 0};
    preset.resize(1);
    EXPECT_EQ(transfer(*interface, SET_CUR, brightness, level), 0);
    EXPECT_EQ(transfer(*interface, GET_CUR, style, preset), 0);
}

// The driver keeps a copy of what it has read or written once, except of values that the camera
// declares to move by themselves. A camera that restores its defaults tells no one, so the copies
// of the others are out of date from then on.
TEST_F(BackEnds, RestoreReachesMovingAndVendorValuesButNotTheDriversCopies) {
    const auto plugged = bench.plug(studioCamera(), 0);
    const auto interface = bench.openInterface(0);
    for (auto [mode, value] : kManualModes)
        ASSERT_EQ(transfer(*interface, SET_CUR, mode, value), 0);
    const ControlId exposure{kCameraTerminal, CT_EXPOSURE_TIME_ABSOLUTE_CONTROL};
    const ControlId brightness{kProcessingUnit, PU_BRIGHTNESS_CONTROL};
    const ControlId reduction{kVendorUnit, XU_NR2D};
    const auto exchange = [&](Request code, ControlId id, Bytes value) {
        EXPECT_EQ(transfer(*interface, code, id, value), 0);
        return value;
    };
    exchange(SET_CUR, exposure, {80, 0, 0, 0});
    exchange(SET_CUR, brightness, {3, 0});
    exchange(SET_CUR, reduction, {1});
    EXPECT_THAT(exchange(GET_CUR, exposure, Bytes(4)), ElementsAre(80, 0, 0, 0));
    EXPECT_THAT(exchange(GET_CUR, brightness, Bytes(2)), ElementsAre(3, 0));
    EXPECT_THAT(exchange(GET_CUR, reduction, Bytes(1)), ElementsAre(1));

    exchange(SET_CUR, {kVendorUnit, XU_RESTORE}, {1});

    ASSERT_EQ(plugged.camera().picture().brightness, 7);
    EXPECT_THAT(exchange(GET_CUR, exposure, Bytes(4)), ElementsAre(167, 0, 0, 0));
    EXPECT_THAT(exchange(GET_CUR, brightness, Bytes(2)), ElementsAre(3, 0));
    EXPECT_THAT(exchange(GET_CUR, reduction, Bytes(1)), ElementsAre(3));
}

TEST_F(BackEnds, CamerasComeAndGoAtTheirPorts) {
    auto first = bench.plug(studioCamera(), 0);
    auto second = bench.plug(classicCamera(), 1);
    EXPECT_EQ(second.device->localizedName(), "Quelvo Classic Camera");
    const std::string identifier = second.device->uniqueID();
    bench.unplug(second);
    EXPECT_EQ(bench.usbDevice(1), nullptr);
    ASSERT_TRUE(bench.usbDevice(0));
    second = bench.plug(classicCamera(), 1);
    EXPECT_EQ(second.device->uniqueID(), identifier);
}

TEST_F(BackEnds, CameraPulledOutInTheMiddleOfRequestsIsGoneForGood) {
    auto plugged = bench.plug(studioCamera(), 0);
    const auto interface = bench.openInterface(0);
    Faults faults;
    faults.vanishesAfter = 2;
    plugged.camera().setFaults(faults);
    int failures = 0;
    for (int i = 0; i < 4; ++i) {
        Bytes preset(1);
        failures += transfer(*interface, GET_CUR, {kVendorUnit, XU_STYLE}, preset) != 0 ? 1 : 0;
    }
    EXPECT_GE(failures, 2);
    EXPECT_TRUE(bench.waitForDeparture(plugged));
    Bytes preset(1);
    EXPECT_EQ(transfer(*interface, GET_CUR, {kVendorUnit, XU_STYLE}, preset), ENODEV);
    EXPECT_EQ(interface->close(), 0);
    EXPECT_NE(interface->open(), 0);
    // The port takes the next camera, which is another device.
    plugged.port.reset();
    const auto next = bench.plug(studioCamera(), 0);
    EXPECT_NE(interface->open(), 0);
}
