// The open button: the control channel, the preview and both pages, on every way out.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QImage>
#include <algorithm>

#include "camera/UVCCameraControl.h"
#include "devices/CaptureSession.h"
#include "platform/AVCaptureSession.h"
#include "platform/backend/CaptureBackend.h"
#include "tests/support/WindowBench.h"

namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

void press(WindowBench& bench) {
    bench.buttonSending("OnBtnOpenCamera:").click();
}

bool showsVideo() {
    return WindowBench::waitUntil([] { return g_captureSession->latestFrame() != nullptr; });
}

/// What the preview area shows at its centre.
QColor previewCentre(WindowBench& bench) {
    auto* preview = bench.window().findChild<QWidget*>("m_previewWnd");
    return preview->grab().toImage().pixelColor(preview->rect().center());
}

/// The lines of a log, without those that every transfer writes.
std::vector<std::string> eventsOf(std::vector<std::string> lines) {
    std::erase_if(lines, [](const std::string& line) {
        return line.starts_with("g_length") || line.starts_with("bmRequestType2");
    });
    return lines;
}

TEST(OpenActionTest, OpensTheShownCameraFillsBothPagesAndShowsItsVideo) {
    WindowBench bench;
    bench.log().take();
    press(bench);
    // The processing unit, then the preview, then the vendor page, then the camera terminal.
    const auto lines = bench.log().take();
    EXPECT_THAT(eventsOf(lines),
                ElementsAre(MatchesRegex("viewLayer = <CALayer: 0x[0-9a-f]+>"), "zoomEnable:0"));
    const auto preview = std::ranges::find_if(
        lines, [](const std::string& line) { return line.starts_with("viewLayer"); });
    EXPECT_EQ(std::count(lines.begin(), preview, "g_length:8"), 11);
    EXPECT_EQ(std::count(lines.begin(), preview, "g_length:24"), 0);
    const auto requests = bench.requests();
    ASSERT_THAT(requests, SizeIs(11 + 1 + 2 * 13 + 6));
    EXPECT_THAT(requests[10], StartsWith("a1 81 0500 0300"));
    EXPECT_THAT(requests[11], StartsWith("a1 81 0b00 0300"));
    EXPECT_THAT(requests[12], StartsWith("a1 85 0900 1000 24"));
    EXPECT_THAT(requests[38], StartsWith("a1 81 0b00 0100"));
    EXPECT_EQ(bench.shown("m_lableVersion"), "v3 V9.2.4");
    EXPECT_EQ(bench.shown("m_textGama"), "238");
    EXPECT_TRUE(showsVideo());
    EXPECT_EQ(g_captureSession->latestFrame()->width, 640);
}

TEST(OpenActionTest, OpeningAgainReplacesSessionAndLayers) {
    WindowBench bench;
    press(bench);
    EXPECT_TRUE(showsVideo());
    const std::weak_ptr<CALayer> layer = bench.controller().m_previewWnd.layer();
    const std::weak_ptr<AVCaptureSession> session = g_captureSession;
    press(bench);
    EXPECT_TRUE(layer.expired());
    EXPECT_TRUE(session.expired());
    EXPECT_TRUE(showsVideo());
    const auto base = bench.controller().m_previewWnd.layer();
    ASSERT_THAT(base->sublayers(), SizeIs(1));
    const auto follows = [&] {
        const NSRect bounds = bench.controller().m_previewWnd.bounds();
        const NSRect& shown = base->sublayers()[0]->frame();
        return shown.width == bounds.width && shown.height == bounds.height &&
               base->frame().width == bounds.width;
    };
    EXPECT_TRUE(follows());
    EXPECT_THAT(bench.log().take("ERROR"), IsEmpty());

    // The preview follows the window.
    const NSRect before = base->frame();
    bench.window().resize(bench.window().width() + 120, bench.window().height() + 40);
    EXPECT_TRUE(WindowBench::waitUntil([&] {
        return base->frame().width != before.width && base->frame().height != before.height;
    }));
    EXPECT_TRUE(follows());
}

TEST(OpenActionTest, OfEqualNamesOpensTheFirstListed) {
    WindowBench bench;
    const auto twin = bench.plugAnother("Quelvo Studio Camera");
    bench.list("m_cbxDevice").setCurrentIndex(1);
    press(bench);
    EXPECT_THAT(bench.requests(), Not(IsEmpty()));
    EXPECT_THAT(twin->requests(), IsEmpty());
}

TEST(OpenActionTest, AnIdentifierCanBeTyped) {
    WindowBench bench;
    const auto second = bench.plugAnother("Second");
    bench.list("m_cbxDevice").setEditText("0x14210000e7a14c11");
    press(bench);
    EXPECT_THAT(second->requests(), Not(IsEmpty()));
    EXPECT_THAT(bench.requests(), IsEmpty());
    EXPECT_TRUE(showsVideo());

    // Only the ids are right: the control channel opens, and no video is found.
    const auto layer = bench.controller().m_previewWnd.layer();
    bench.list("m_cbxDevice").setEditText("e7a14c10");
    press(bench);
    EXPECT_THAT(bench.requests(), Not(IsEmpty()));
    EXPECT_EQ(bench.controller().m_previewWnd.layer(), layer);
    EXPECT_EQ(g_captureSession->latestFrame(), nullptr);
}

TEST(OpenActionTest, WithoutACameraBothPagesAreStillFilled) {
    WindowBench bench;
    bench.pressOpen();
    EXPECT_EQ(bench.shown("m_textGama"), "238");
    const auto* channel = g_uvcCamera.get();
    const auto session = g_captureSession;
    const auto layer = bench.controller().m_previewWnd.layer();
    bench.bus().unplug(bench.cameraReference());
    // The open camera's going changes nothing but the list.
    EXPECT_EQ(g_uvcCamera.get(), channel);
    EXPECT_EQ(g_captureSession, session);
    EXPECT_EQ(bench.controller().m_previewWnd.layer(), layer);
    EXPECT_EQ(bench.shown("m_textGama"), "238");
    bench.log().take();
    press(bench);
    const auto lines = eventsOf(bench.log().take());
    EXPECT_EQ(lines.front(),
              "CameraControl Error: \"\" does not end in a vendor and a product id.");
    EXPECT_THAT(lines, Contains("zoomEnable:1"));
    EXPECT_EQ(bench.shown("m_lableVersion"), "Get device info failed!");
    for (const char* name :
         {"m_textBright", "m_textContrast", "m_textHue", "m_textSaturation", "m_textSharpness",
          "m_textGama", "m_textWb", "m_textBackLight", "m_textGain", "m_textExposure"})
        EXPECT_EQ(bench.shown(name), "0") << name;
    EXPECT_EQ(bench.shown("m_sliderAutoExposure"), "-5");
    EXPECT_TRUE(bench.isEnabled("m_sliderWB"));
    EXPECT_EQ(bench.shown("m_btn60HZ"), "on");
    EXPECT_EQ(bench.shown("m_btnCompSwitch"), "on");  // a read that fails counts as 0
    EXPECT_EQ(bench.shown("m_btnStyleNormal"), "on");
    for (const char* name : {"m_btnAutoWB", "m_btnAutoFocus", "m_btnAutoExposure", "m_btn50HZ"})
        EXPECT_EQ(bench.shown(name), "off") << name;
    EXPECT_TRUE(bench.isEnabled("m_sliderAutoExposure"));
    for (const char* name :
         {"m_sliderZoom", "m_sliderFocus", "m_btnAutoFocus", "m_sliderPano", "m_sliderTile"})
        EXPECT_FALSE(bench.isEnabled(name)) << name;
}

TEST(OpenActionTest, VideoThatCannotBeOpenedIsLoggedAndThePagesAreFilled) {
    WindowBench bench;
    bench.camera().setFaults({.videoOpen = "The camera is in use by another program."});
    bench.log().take();
    press(bench);
    EXPECT_THAT(bench.log().take("ERROR"),
                ElementsAre(AllOf(StartsWith("ERROR: trying to open camera: "),
                                  HasSubstr("in use by another program"))));
    EXPECT_EQ(bench.shown("m_lableVersion"), "v3 V9.2.4");
    EXPECT_EQ(previewCentre(bench), QColor(153, 153, 153));  // the base layer's grey
}

TEST(OpenActionTest, AVideoThatEndsIsLoggedOnceAndTheNextOpenWorks) {
    WindowBench bench;
    press(bench);
    EXPECT_TRUE(showsVideo());
    bench.log().take();
    bench.bus().failVideo(bench.cameraReference(), "The camera went away.");
    std::vector<std::string> lines;
    EXPECT_TRUE(WindowBench::waitUntil([&] {
        std::ranges::copy(bench.log().take("ERROR"), std::back_inserter(lines));
        return !lines.empty();
    }));
    EXPECT_THAT(lines, ElementsAre("ERROR: trying to open camera: The camera went away."));
    press(bench);
    EXPECT_TRUE(showsVideo());
    EXPECT_THAT(bench.log().take("ERROR"), IsEmpty());
}

TEST(OpenActionTest, PulledOutBeforeAnyRequestTheOpenEndsAndTheNextWorks) {
    WindowBench bench;
    press(bench);
    const std::size_t all = bench.requests().size();
    for (unsigned n = 0; n <= all; ++n) {
        bench.camera().setFaults({.vanishesAfter = n});
        bench.list("m_cbxDevice").setEditText(QString::fromStdString(bench.uniqueID()));
        press(bench);
        EXPECT_THAT(bench.requests(), SizeIs(n));
        EXPECT_EQ(bench.log().take("CameraControl Error").empty(), n == all) << n;
        bench.camera().setFaults({});
        bench.bus().announceVanished();
        bench.bus().unplug(bench.cameraReference());
        bench.bus().plug(bench.cameraReference());
        bench.log().take();
        press(bench);
        EXPECT_THAT(bench.log().take("CameraControl Error"), IsEmpty()) << "after " << n;
        bench.requests();
    }
    EXPECT_EQ(bench.shown("m_lableVersion"), "v3 V9.2.4");
}

}  // namespace
