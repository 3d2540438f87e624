// A camera on a loose cable, which is pulled out at any request.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/backend/CaptureBackend.h"
#include "platform/backend/UsbBackend.h"
#include "tests/support/Footprint.h"
#include "tests/support/WindowFixture.h"

namespace {

constexpr std::string_view previewFailed = "ERROR: trying to open camera: ";

/// A button that exchanges many requests with the camera.
class PulledOut : public testing::TestWithParam<std::string> {};

TEST_P(PulledOut, AtAnyRequestItIsToldAndLeavesNothingBehindAndTheNextOpenWorks) {
    WindowFixture fixture;
    fixture.pressOpen();
    const auto logged = [&](std::string_view start) { return fixture.log().count(start); };
    Footprint before;
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
        if (shown) {
            EXPECT_TRUE(WindowFixture::waitUntil([&] { return logged(previewFailed) > 0; }));
        }
        fixture.bus().announceVanished();
        EXPECT_EQ(logged(previewFailed), shown ? 1 : 0);
        EXPECT_EQ(logged("processRemoveDeviceEventWithNotification"), 1);
        for (int position = 10; position < 20; ++position)
            fixture.moveSlider("m_sliderBright", position);
        fixture.camera().setFaults({});
        fixture.bus().plug(fixture.cameraReference());
        fixture.pressOpen();
        fixture.awaitPicture();
        EXPECT_EQ(fixture.shown("m_lableVersion"), "v3 V9.2.4");
        if (answered == 5)
            before = Footprint::now();
    }
    EXPECT_GT(answered, 10);
    // A thread that has just ended, and the picture that it held, may count for a moment more.
    Footprint after;
    EXPECT_TRUE(WindowFixture::waitUntil([&] {
        after = Footprint::now();
        return after.isBackAt(before, std::size_t{64} * 1024);
    })) << after
        << "; before: " << before;
}

INSTANTIATE_TEST_SUITE_P(EnduranceTest, PulledOut,
                         testing::Values("OnBtnOpenCamera:", "OnBtnRestore:", "OnBtnUvcDefault:"));

}  // namespace
