#include <gmock/gmock.h>

#include <QProcess>
#include <cerrno>
#include <cstring>

#include "tests/kernel/KernelBench.h"
#include "virtualcam/DemoBus.h"

using namespace virtualcam;  // NOLINT(google-build-using-namespace): names of controls throughout

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

using Bytes = std::vector<std::uint8_t>;

constexpr ControlId kStyle{kVendorUnit, XU_STYLE};
constexpr ControlId kBrightness{kProcessingUnit, PU_BRIGHTNESS_CONTROL};

/// Controls by whose value the others are in the user's hands.
const std::vector<std::pair<ControlId, Bytes>> kManualModes{
    {{kCameraTerminal, CT_AE_MODE_CONTROL}, {1}},
    {{kCameraTerminal, CT_FOCUS_AUTO_CONTROL}, {0}},
    {{kProcessingUnit, PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL}, {0}},
};

/// A legal value of the row that is not its default: the lowest one, negative where there is one.
Bytes testValue(const ControlRow& row) {
    for (const auto& [mode, value] : kManualModes)
        if (mode == row.id)
            return value;
    const auto& [minimum, maximum, step, standard] = row.limits;
    const std::int32_t values[] = {minimum == standard ? maximum : minimum,
                                   row.secondLimits ? row.secondLimits->maximum : 0};
    Bytes bytes(row.length);
    std::memcpy(bytes.data(), values, std::min<std::size_t>(row.length, sizeof values));
    return bytes;
}

class BackEnds : public testing::Test {
  protected:
    void openStudio() {
        plugged = bench.plug(studioCamera(), 0);
        interface = bench.openInterface(0);
    }

    /// Makes a request that ends with `status`; returns what is then in its data.
    Bytes exchange(Request code, ControlId id, Bytes value, IOReturn status = 0) {
        EXPECT_EQ(transfer(*interface, code, id, value), status);
        return value;
    }

    KernelBench bench;
    PluggedCamera plugged;
    std::shared_ptr<platform::UsbInterface> interface;
};

}  // namespace

TEST_F(BackEnds, CamerasAreListedOnceWithTheirPlaceAndComeAndGo) {
    const auto studio = bench.plug(studioCamera(), 2);
    auto classic = bench.plug(classicCamera(), 1);
    EXPECT_EQ(studio.device->localizedName(), "Quelvo Studio Camera");
    EXPECT_EQ(classic.device->localizedName(), "Quelvo Classic Camera");
    std::vector<std::string> cameras;
    std::vector<std::string> others;
    for (const auto& device : bench.capture.devices())
        (device->hasVideo() ? cameras : others).push_back(device->uniqueID());
    // A camera's second node carries metadata, no pictures; a microphone is no camera.
    EXPECT_THAT(cameras, ElementsAre("0x01300000e7a14c10", "0x01200000e7a11c05"));
    EXPECT_THAT(others, ElementsAre(testing::EndsWith(":sound")));

    platform::LinuxUsb usb;
    for (const auto& device : usb.devices())  // and none of their interfaces, which have no ids
        EXPECT_NE(device->vendorID(), 0);
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

    bench.unplug(classic);
    EXPECT_EQ(bench.usbDevice(1), nullptr);
    EXPECT_TRUE(bench.usbDevice(2));
    EXPECT_EQ(device->createPlugIn(), ENODEV);
    classic = bench.plug(classicCamera(), 1);
    EXPECT_EQ(classic.device->uniqueID(), "0x01200000e7a11c05");
    // What was found before is not the camera that is now in the port.
    EXPECT_EQ(device->createPlugIn(), ENODEV);
    EXPECT_EQ(interfaces[0]->open(), ENODEV);

    QProcess tool;
    tool.setProcessChannelMode(QProcess::MergedChannels);
    tool.start("lsusb", {"-v", "-d", "e7a1:4c10"});
    ASSERT_TRUE(tool.waitForFinished());
    const std::string text = tool.readAll().toStdString();
    for (const char* part : {"Quelvo Studio Camera", "EXTENSION_UNIT", "FORMAT_UNCOMPRESSED"})
        EXPECT_THAT(text, HasSubstr(part));
    for (const char* complaint : {"arning", "nvalid", "nrecognized", "UNKNOWN", "INVALID", "Junk"})
        EXPECT_THAT(text, Not(HasSubstr(complaint)));
}

TEST_F(BackEnds, EveryControlIsWrittenAndReadWithItsExactBytes) {
    openStudio();
    for (const auto& [mode, value] : kManualModes)
        exchange(SET_CUR, mode, value);
    for (const ControlRow& row : plugged.camera().model().controls) {
        SCOPED_TRACE(testing::Message() << +row.id.unit << ' ' << +row.id.selector);
        plugged.camera().clearRequests();
        Bytes value = testValue(row);
        if ((row.info & kInfoSet) != 0) {
            exchange(SET_CUR, row.id, value);
            // Between the writes the driver reads what a mode has changed.
            auto arrived = plugged.camera().requests();
            std::erase_if(arrived, [](const auto& record) { return record.bRequest != SET_CUR; });
            EXPECT_THAT(arrived, ElementsAre(recordOf(requestFor(SET_CUR, row.id, value), 0)));
        }
        if (row.kind == ControlKind::text)
            std::ranges::copy(plugged.camera().model().version, value.begin());
        if ((row.info & kInfoGet) != 0) {
            EXPECT_EQ(exchange(GET_CUR, row.id, Bytes(row.length)), value);
        }
        // The length is told into a room of any size.
        EXPECT_THAT(exchange(GET_LEN, row.id, Bytes(24)), ElementsAre(row.length, 0));
    }
}

TEST_F(BackEnds, RefusalsAndSilenceAreErrorsAndPass) {
    openStudio();
    // The driver asks for a vendor control's length once, at its first use.
    exchange(GET_CUR, kStyle, Bytes(1));
    plugged.camera().setFaults({.stalled = {kBrightness, kStyle}});
    exchange(SET_CUR, kBrightness, {3, 0}, EPIPE);
    exchange(GET_CUR, kStyle, Bytes(1), EPIPE);

    plugged.camera().setWait([](std::chrono::milliseconds) {});
    plugged.camera().setFaults({.delay = kControlTimeout});
    exchange(GET_CUR, kStyle, Bytes(1), ETIMEDOUT);

    plugged.camera().setFaults({});
    exchange(SET_CUR, kBrightness, {3, 0});
    exchange(GET_CUR, kStyle, Bytes(1));
}

// The driver keeps a copy of what it has read or written once, except of values that the camera
// declares to move by themselves. A camera that restores its defaults tells no one, so the copies
// of the others are out of date from then on.
TEST_F(BackEnds, RestoreReachesMovingAndVendorValuesButNotTheDriversCopies) {
    openStudio();
    for (const auto& [mode, value] : kManualModes)
        exchange(SET_CUR, mode, value);
    const struct {
        ControlId id;
        Bytes before, after;
    } rows[] = {
        {{kCameraTerminal, CT_EXPOSURE_TIME_ABSOLUTE_CONTROL}, {80, 0, 0, 0}, {167, 0, 0, 0}},
        {kBrightness, {3, 0}, {3, 0}},
        {{kVendorUnit, XU_NR2D}, {1}, {3}},
    };
    for (const auto& row : rows) {
        exchange(SET_CUR, row.id, row.before);
        EXPECT_EQ(exchange(GET_CUR, row.id, Bytes(row.before.size())), row.before);
    }
    exchange(SET_CUR, {kVendorUnit, XU_RESTORE}, {1});
    EXPECT_EQ(plugged.camera().picture().brightness, 7);
    for (const auto& row : rows)
        EXPECT_EQ(exchange(GET_CUR, row.id, Bytes(row.after.size())), row.after);
}

TEST_F(BackEnds, CameraPulledOutInTheMiddleOfRequestsIsGoneForGood) {
    openStudio();
    plugged.camera().setFaults({.vanishesAfter = 2});
    int failures = 0;
    Bytes preset(1);
    for (int i = 0; i < 4; ++i)
        failures += transfer(*interface, GET_CUR, kStyle, preset) != 0 ? 1 : 0;
    EXPECT_GE(failures, 2);
    bench.unplug(plugged);
    exchange(GET_CUR, kStyle, Bytes(1), ENODEV);
    EXPECT_EQ(interface->close(), 0);
    exchange(GET_CUR, kStyle, Bytes(1), EBADF);
    // The port takes the next camera, which is another device.
    plugged = bench.plug(studioCamera(), 0);
    EXPECT_EQ(interface->open(), ENODEV);
}
