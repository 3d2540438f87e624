// A camera on a loose cable: pulled out at any request, and plugged in many times.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/backend/CaptureBackend.h"
#include "platform/backend/UsbBackend.h"
#include "tests/support/Footprint.h"
#include "tests/support/WindowFixture.h"

namespace {

constexpr std::string_view previewFailed = "ERROR: trying to open camera: ";

void awaitPreviewsEnd(WindowFixture& fixture) {
    EXPECT_TRUE(WindowFixture::waitUntil([&] { return fixture.log().count(previewFailed) > 0; }));
}

/// A button that exchanges many requests with the camera.
class PulledOut : public testing::TestWithParam<std::string> {};

TEST_P(PulledOut, AtAnyRequestItIsToldAndTheNextOpenWorks) {
    WindowFixture fixture;
    fixture.pressOpen();
    const auto logged = [&](std::string_view start) { return fixture.log().count(start); };
    unsigned answered = 0;
    const auto isPulledOut = [&] {
        fixture.camera().setFaults({.vanishesAfter = answered});
        const NextBox yes(QMessageBox::AcceptRole);
        fixture.click(GetParam());
        return fixture.bus().usb().devices().empty();
    };
    for (; isPulledOut(); ++answered) {
        SCOPED_TRACE(testing::Message() << "after " << answered << " requests");
        EXPECT_THAT(fixture.bus().capture().devices(), testing::IsEmpty());
        EXPECT_THAT(fixture.requests(), testing::SizeIs(answered));
        EXPECT_GE(logged("CameraControl Error"), 1);
        const bool shown = GetParam() != "OnBtnOpenCamera:" || logged("viewLayer") == 1;
        if (shown)
            awaitPreviewsEnd(fixture);
        fixture.bus().announceVanished();
        EXPECT_EQ(logged(previewFailed), shown ? 1 : 0);
        EXPECT_EQ(logged("processRemoveDeviceEventWithNotification"), 1);

        fixture.camera().setFaults({});
        fixture.bus().plug(fixture.cameraReference());
        fixture.pressOpen();
        fixture.awaitPicture();
        EXPECT_EQ(fixture.shown("m_lableVersion"), "v3 V9.2.4");
    }
    EXPECT_GT(answered, 10);
}

INSTANTIATE_TEST_SUITE_P(EnduranceTest, PulledOut,
                         testing::Values("OnBtnOpenCamera:", "OnBtnRestore:", "OnBtnUvcDefault:"));

TEST(EnduranceTest, HoweverOftenACameraIsPluggedInNothingIsLeftBehind) {
    WindowFixture fixture;
    Footprint before;
    for (int i = 0; i <= 100; ++i) {
        fixture.pressOpen();
        if (i % 10 == 0)  // mostly it is pulled out before there is a picture
            fixture.awaitPicture();
        fixture.bus().restart(fixture.cameraReference());
        awaitPreviewsEnd(fixture);
        if (i == 10)
            before = Footprint::now();
    }
    // A thread that has just ended, and the picture that it held, may count for a moment more.
    Footprint after;
    EXPECT_TRUE(WindowFixture::waitUntil([&] {
        after = Footprint::now();
        return after.isBackAt(before, std::size_t{64} * 1024);
    })) << after
        << "; before: " << before;
}

}  // namespace
