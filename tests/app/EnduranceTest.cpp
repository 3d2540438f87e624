// A camera on a loose cable: pulled out at any request, and plugged in a thousand times.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <optional>

#include "devices/CaptureSession.h"
#include "platform/AVCaptureSession.h"
#include "tests/support/Footprint.h"
#include "tests/support/WindowBench.h"

namespace {

using testing::SizeIs;

constexpr std::string_view requestFailed = "CameraControl Error";
constexpr std::string_view previewFailed = "ERROR: trying to open camera: ";
constexpr std::string_view cameraLeft = "processRemoveDeviceEventWithNotification";

using Lines = std::vector<std::string>;

std::size_t count(const Lines& lines, std::string_view prefix) {
    return static_cast<std::size_t>(std::ranges::count_if(
        lines, [prefix](const std::string& line) { return line.starts_with(prefix); }));
}

/// Handles events until the log has a line that starts with `prefix`; returns all lines.
Lines linesUntil(WindowBench& bench, std::string_view prefix) {
    Lines lines;
    EXPECT_TRUE(WindowBench::waitUntil([&] {
        std::ranges::move(bench.log().take(), std::back_inserter(lines));
        return count(lines, prefix) > 0;
    }));
    return lines;
}

/// A button that exchanges many requests with the camera.
class PulledOut : public testing::TestWithParam<const char*> {
  protected:
    PulledOut() { bench_.pressOpen(); }

    /// Presses the button; the camera answers so many requests. Returns the log.
    Lines press(std::optional<unsigned> answered = std::nullopt) {
        bench_.list("m_cbxDevice").setEditText(QStringLiteral("0x14200000e7a14c10"));
        bench_.requests();
        bench_.camera().setFaults({.vanishesAfter = answered});
        const NextBox yes(QMessageBox::AcceptRole);
        bench_.click(GetParam());
        return bench_.log().take();
    }

    WindowBench bench_;
};

TEST_P(PulledOut, AtAnyRequestItIsToldAndTheNextOpenWorks) {
    press();
    const auto all = static_cast<unsigned>(bench_.requests().size());
    ASSERT_GT(all, 10U);
    for (unsigned n = 0; n < all; ++n) {
        SCOPED_TRACE(testing::Message() << "after " << n << " of " << all << " requests");
        Lines lines = press(n);
        EXPECT_THAT(bench_.requests(), SizeIs(n));
        // One line for each transfer that fails, until the button has done its work.
        EXPECT_GE(count(lines, requestFailed), 1U);
        EXPECT_LE(count(lines, requestFailed), all - n);
        const bool opens = std::string_view(GetParam()) == "OnBtnOpenCamera:";
        const bool shown = !opens || count(lines, "viewLayer") == 1;
        if (shown && count(lines, previewFailed) == 0)
            std::ranges::move(linesUntil(bench_, previewFailed), std::back_inserter(lines));
        bench_.bus().announceVanished();
        std::ranges::move(bench_.log().take(), std::back_inserter(lines));
        EXPECT_EQ(count(lines, previewFailed), shown ? 1U : 0U);
        EXPECT_EQ(count(lines, cameraLeft), 1U);

        bench_.camera().setFaults({});
        bench_.bus().plug(bench_.cameraReference());
        bench_.click("OnBtnOpenCamera:");
        lines = bench_.log().take();
        EXPECT_EQ(count(lines, requestFailed) + count(lines, previewFailed), 0U);
        EXPECT_EQ(bench_.shown("m_lableVersion"), "v3 V9.2.4");
    }
}

INSTANTIATE_TEST_SUITE_P(EnduranceTest, PulledOut,
                         testing::Values("OnBtnOpenCamera:", "OnBtnRestore:", "OnBtnUvcDefault:"));

/// Plugs the camera in, opens it and pulls it out; mostly before there is a picture.
void cycle(WindowBench& bench, bool untilSeen) {
    bench.bus().plug(bench.cameraReference());
    bench.pressOpen();
    if (untilSeen) {
        EXPECT_TRUE(
            WindowBench::waitUntil([] { return g_captureSession->latestFrame() != nullptr; }));
    }
    bench.bus().unplug(bench.cameraReference());
    linesUntil(bench, previewFailed);
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
            before = Footprint::now();
    }
    const Footprint after = Footprint::now();
    EXPECT_TRUE(after.isBackAt(before, std::size_t{64} * 1024)) << after << "; before: " << before;
    RecordProperty("before", testing::PrintToString(before));
    RecordProperty("after", testing::PrintToString(after));
}

}  // namespace
