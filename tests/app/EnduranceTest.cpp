// A camera on a loose cable: pulled out at any request, and plugged in a thousand times.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>

#include "tests/support/Footprint.h"
#include "tests/support/WindowFixture.h"

namespace {

constexpr std::string_view requestFailed = "CameraControl Error";
constexpr std::string_view previewFailed = "ERROR: trying to open camera: ";

void awaitPreviewsEnd(WindowFixture& fixture) {
    EXPECT_TRUE(WindowFixture::waitUntil([&] { return fixture.log().count(previewFailed) > 0; }));
}

/// A button that exchanges many requests with the camera.
class PulledOut : public testing::TestWithParam<std::string> {};

TEST_P(PulledOut, AtAnyRequestItIsToldAndTheNextOpenWorks) {
    const std::string& button = GetParam();
    WindowFixture fixture;
    fixture.pressOpen();
    const auto logged = [&](std::string_view start) { return fixture.log().count(start); };
    const auto press = [&](std::optional<unsigned> answered) {
        fixture.list("m_cbxDevice").setEditText(QStringLiteral("0x14200000e7a14c10"));
        fixture.requests();
        fixture.log().take();
        fixture.camera().setFaults({.vanishesAfter = answered});
        const NextBox yes(QMessageBox::AcceptRole);
        fixture.click(button);
    };
    press(std::nullopt);
    const auto all = static_cast<int>(fixture.requests().size());
    ASSERT_GT(all, 10);
    for (int n = 0; n < all; ++n) {
        SCOPED_TRACE(testing::Message() << "after " << n << " of " << all << " requests");
        press(n);
        EXPECT_THAT(fixture.requests(), testing::SizeIs(n));
        // One line for each transfer that fails, until the button has done its work.
        EXPECT_GE(logged(requestFailed), 1);
        EXPECT_LE(logged(requestFailed), all - n);
        const bool shown = button != "OnBtnOpenCamera:" || logged("viewLayer") == 1;
        if (shown)
            awaitPreviewsEnd(fixture);
        fixture.bus().announceVanished();
        EXPECT_EQ(logged(previewFailed), shown ? 1 : 0);
        EXPECT_EQ(logged("processRemoveDeviceEventWithNotification"), 1);

        fixture.camera().setFaults({});
        fixture.bus().plug(fixture.cameraReference());
        fixture.log().take();
        fixture.click("OnBtnOpenCamera:");
        EXPECT_EQ(logged(requestFailed) + logged(previewFailed), 0);
        EXPECT_EQ(fixture.shown("m_lableVersion"), "v3 V9.2.4");
    }
}

INSTANTIATE_TEST_SUITE_P(EnduranceTest, PulledOut,
                         testing::Values("OnBtnOpenCamera:", "OnBtnRestore:", "OnBtnUvcDefault:"));

// QUELVO_PLUGS sets how often the camera is plugged in after the first ten times; a thousand times
// take too long for every run.
TEST(EnduranceTest, HoweverOftenACameraIsPluggedInNothingIsLeftBehind) {
    const char* wanted = std::getenv("QUELVO_PLUGS");
    const int cycles = wanted == nullptr ? 100 : std::atoi(wanted);
    WindowFixture fixture;
    fixture.bus().unplug(fixture.cameraReference());
    Footprint before;
    for (int i = 0; i <= cycles; ++i) {
        fixture.bus().plug(fixture.cameraReference());
        fixture.pressOpen();
        if (i % 10 == 0)  // mostly it is pulled out before there is a picture
            fixture.awaitPicture();
        fixture.camera().setFaults({.stalled = {{3, PU_BRIGHTNESS_CONTROL}}});
        for (int position = 10; position < 20; ++position)
            fixture.moveSlider("m_sliderBright", position);
        EXPECT_EQ(fixture.log().count(requestFailed), 10);
        fixture.camera().setFaults({});
        fixture.bus().unplug(fixture.cameraReference());
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
