// A camera on a loose cable: pulled out at any request, and plugged in a thousand times.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>

#include "devices/CaptureSession.h"
#include "platform/AVCaptureSession.h"
#include "tests/support/Footprint.h"
#include "tests/support/WindowBench.h"

namespace {

constexpr std::string_view requestFailed = "CameraControl Error";
constexpr std::string_view previewFailed = "ERROR: trying to open camera: ";
constexpr std::string_view cameraLeft = "processRemoveDeviceEventWithNotification";

void awaitPreviewsEnd(WindowBench& bench) {
    EXPECT_TRUE(WindowBench::waitUntil([&] { return bench.log().count(previewFailed) > 0; }));
}

/// A button that exchanges many requests with the camera, and how many of them lie between those at
/// which the camera is pulled out.
class PulledOut : public testing::TestWithParam<std::pair<const char*, int>> {
  protected:
    PulledOut() { bench_.pressOpen(); }

    /// Presses the button; the camera answers so many requests. The log and the requests are new.
    void press(std::optional<unsigned> answered = std::nullopt) {
        bench_.list("m_cbxDevice").setEditText(QStringLiteral("0x14200000e7a14c10"));
        bench_.requests();
        bench_.log().take();
        bench_.camera().setFaults({.vanishesAfter = answered});
        const NextBox yes(QMessageBox::AcceptRole);
        bench_.click(GetParam().first);
    }

    int logged(std::string_view start) { return bench_.log().count(start); }

    WindowBench bench_;
};

TEST_P(PulledOut, AtAnyRequestItIsToldAndTheNextOpenWorks) {
    press();
    const auto all = static_cast<int>(bench_.requests().size());
    ASSERT_GT(all, 10);
    for (int n = 0; n < all; n += GetParam().second) {
        SCOPED_TRACE(testing::Message() << "after " << n << " of " << all << " requests");
        press(n);
        EXPECT_THAT(bench_.requests(), testing::SizeIs(n));
        // One line for each transfer that fails, until the button has done its work.
        EXPECT_GE(logged(requestFailed), 1);
        EXPECT_LE(logged(requestFailed), all - n);
        const bool opens = std::string_view(GetParam().first) == "OnBtnOpenCamera:";
        const bool shown = !opens || logged("viewLayer") == 1;
        if (shown)
            awaitPreviewsEnd(bench_);
        bench_.bus().announceVanished();
        EXPECT_EQ(logged(previewFailed), shown ? 1 : 0);
        EXPECT_EQ(logged(cameraLeft), 1);

        bench_.camera().setFaults({});
        bench_.bus().plug(bench_.cameraReference());
        bench_.log().take();
        bench_.click("OnBtnOpenCamera:");
        EXPECT_EQ(logged(requestFailed) + logged(previewFailed), 0);
        EXPECT_EQ(bench_.shown("m_lableVersion"), "v3 V9.2.4");
    }
}

// A restore reads what an open reads, and each time a whole picture is waited for.
INSTANTIATE_TEST_SUITE_P(EnduranceTest, PulledOut,
                         testing::Values(std::pair{"OnBtnOpenCamera:", 1},
                                         std::pair{"OnBtnRestore:", 4},
                                         std::pair{"OnBtnUvcDefault:", 1}));

/// Plugs the camera in, opens it and pulls it out; mostly before there is a picture.
void cycle(WindowBench& bench, bool untilSeen) {
    bench.bus().plug(bench.cameraReference());
    bench.pressOpen();
    if (untilSeen)
        bench.awaitPicture();
    bench.bus().unplug(bench.cameraReference());
    awaitPreviewsEnd(bench);
}

/// What is held once the last preview's thread has ended.
Footprint footprint() {
    g_captureSession.reset();
    return Footprint::now();
}

// QUELVO_PLUGS sets how often the camera is plugged in after the first ten times; a thousand times
// take too long for every run.
TEST(EnduranceTest, HoweverOftenACameraIsPluggedInNothingIsLeftBehind) {
    const char* wanted = std::getenv("QUELVO_PLUGS");
    const int cycles = wanted == nullptr ? 100 : std::atoi(wanted);
    WindowBench bench;
    bench.bus().unplug(bench.cameraReference());
    Footprint before;
    for (int i = 0; i <= cycles; ++i) {
        cycle(bench, i % 10 == 0);
        if (i == 10)
            before = footprint();
    }
    // A thread that has just ended, and the picture that it held, may count for a moment more.
    Footprint after;
    EXPECT_TRUE(WindowBench::waitUntil([&] {
        after = footprint();
        return after.isBackAt(before, std::size_t{64} * 1024);
    })) << after
        << "; before: " << before;
    RecordProperty("before", testing::PrintToString(before));
    RecordProperty("after", testing::PrintToString(after));
}

}  // namespace
