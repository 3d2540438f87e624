// The open button: the control channel, the preview and both pages, on every way out.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QImage>

#include "camera/UVCCameraControl.h"
#include "devices/CaptureSession.h"
#include "platform/AVCaptureSession.h"
#include "platform/backend/CaptureBackend.h"
#include "tests/support/WindowBench.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::SizeIs;
using testing::StartsWith;

class OpenActionTest : public testing::Test {
  protected:
    OpenActionTest() { bench_.log().take(); }

    void press() { bench_.click("OnBtnOpenCamera:"); }
    void type(const std::string& text) {
        bench_.list("m_cbxDevice").setEditText(QString::fromStdString(text));
    }
    std::shared_ptr<CALayer> baseLayer() { return bench_.controller().m_previewWnd.layer(); }

    WindowBench bench_;
};

TEST_F(OpenActionTest, OpensTheShownCameraFillsBothPagesAndShowsItsVideo) {
    press();
    // The processing unit, then the preview, then the vendor page, then the camera terminal.
    auto lines = bench_.log().take();
    std::erase_if(
        lines, [](auto& line) { return line.starts_with("bm") || line.starts_with("g_length2"); });
    ASSERT_THAT(lines, SizeIs(11 + 1 + 1 + 13 + 1 + 6));
    EXPECT_THAT(lines[11], MatchesRegex("viewLayer = <CALayer: 0x[0-9a-f]+>"));
    EXPECT_EQ(lines[27], "zoomEnable:0");
    const auto requests = bench_.requests();
    ASSERT_THAT(requests, SizeIs(11 + 1 + 2 * 13 + 6));
    EXPECT_THAT(requests[11], StartsWith("a1 81 0b00 0300"));
    EXPECT_THAT(requests[12], StartsWith("a1 85 0900 1000 24"));
    EXPECT_EQ(bench_.shown("m_textGama"), "238");
    bench_.awaitPicture();
    EXPECT_EQ(g_captureSession->latestFrame()->width, 640);
}

TEST_F(OpenActionTest, OpeningAgainAfterAFailureReplacesSessionAndLayersWhichFollowTheWindow) {
    press();
    bench_.awaitPicture();
    bench_.bus().failVideo(bench_.cameraReference(), "The camera went away.");
    EXPECT_TRUE(WindowBench::waitUntil([&] { return bench_.log().count("ERROR") > 0; }));
    const std::weak_ptr<CALayer> layer = baseLayer();
    const std::weak_ptr<AVCaptureSession> session = g_captureSession;
    press();
    EXPECT_TRUE(layer.expired());
    EXPECT_TRUE(session.expired());
    bench_.awaitPicture();
    ASSERT_THAT(baseLayer()->sublayers(), SizeIs(1));
    const auto follows = [&] {
        const NSRect bounds = bench_.controller().m_previewWnd.bounds();
        const NSRect& shown = baseLayer()->sublayers()[0]->frame();
        return shown.width == bounds.width && shown.height == bounds.height &&
               baseLayer()->frame().width == bounds.width;
    };
    EXPECT_TRUE(follows());
    const NSRect before = baseLayer()->frame();
    bench_.window().resize(bench_.window().size() + QSize(120, 40));
    EXPECT_TRUE(
        WindowBench::waitUntil([&] { return baseLayer()->frame().height != before.height; }));
    EXPECT_NE(baseLayer()->frame().width, before.width);
    EXPECT_TRUE(follows());
    EXPECT_THAT(bench_.log().take("ERROR"),
                ElementsAre("ERROR: trying to open camera: The camera went away."));
}

TEST_F(OpenActionTest, OpensTheFirstOfEqualNamesOrATypedIdentifier) {
    const auto twin = bench_.plugAnother("Quelvo Studio Camera");
    bench_.list("m_cbxDevice").setCurrentIndex(1);
    press();
    EXPECT_FALSE(bench_.requests().empty());
    EXPECT_THAT(twin->requests(), IsEmpty());
    type("0x14210000e7a14c11");
    press();
    EXPECT_FALSE(twin->requests().empty());
    EXPECT_THAT(bench_.requests(), IsEmpty());
    bench_.awaitPicture();
    // Only the ids are right: the control channel opens, and no video is found.
    const auto layer = baseLayer();
    type("e7a14c10");
    press();
    EXPECT_FALSE(bench_.requests().empty());
    EXPECT_EQ(baseLayer(), layer);
    EXPECT_EQ(g_captureSession->latestFrame(), nullptr);
}

TEST_F(OpenActionTest, TheOpenCamerasGoingChangesNothingButTheList) {
    press();
    const auto open = [&] { return std::tuple(g_uvcCamera.get(), g_captureSession, baseLayer()); };
    const auto before = open();
    bench_.bus().unplug(bench_.cameraReference());
    EXPECT_EQ(open(), before);
    EXPECT_EQ(bench_.shown("m_textGama"), "238");
    press();  // nothing is shown in the list: both pages are filled from no camera
    EXPECT_EQ(bench_.shown("m_lableVersion"), "Get device info failed!");
    EXPECT_EQ(bench_.shown("m_textGama"), "0");
}

TEST_F(OpenActionTest, VideoThatCannotBeOpenedIsLoggedAndThePagesAreFilled) {
    bench_.camera().setFaults({.videoOpen = "The camera is in use by another program."});
    press();
    EXPECT_THAT(
        bench_.log().take("ERROR"),
        ElementsAre(MatchesRegex("ERROR: trying to open camera: .*in use by another program.*")));
    EXPECT_EQ(bench_.shown("m_lableVersion"), "v3 V9.2.4");
    auto* preview = bench_.find<QWidget>("m_previewWnd");
    EXPECT_EQ(preview->grab().toImage().pixelColor(preview->rect().center()),
              QColor(153, 153, 153));  // the base layer's grey
}

}  // namespace
