// The camera list, which follows cameras as they come and go, and the open button.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "devices/CameraList.h"
#include "devices/CaptureSession.h"
#include "platform/AVCaptureSession.h"
#include "platform/backend/CaptureBackend.h"
#include "tests/support/Pixels.h"
#include "tests/support/WindowBench.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* removed = "processRemoveDeviceEventWithNotification";

/// The listed cameras, each with the end of its identifier, and what the combo box shows:
/// "Studio 10, Second 11, > Studio".
std::string listed(WindowBench& bench) {
    std::string text;
    const QComboBox& box = bench.list("m_cbxDevice");
    for (const CameraEntry& entry : g_deviceList)
        text += box.itemText(static_cast<int>(&entry - g_deviceList.data())).toStdString() + ' ' +
                &entry.uniqueID.at(16) + ", ";
    return text + "> " + box.currentText().toStdString();
}

virtualcam::CameraModel studio() {
    virtualcam::CameraModel model = virtualcam::studioCamera();
    model.name = "Studio";
    return model;
}

TEST(CameraListTest, FollowsTheCamerasAndLeavesTheirMicrophonesOut) {
    WindowBench bench(studio(), false);
    setInCamera(bench.camera(), {16, virtualcam::XU_AUDIO_SWITCH}, {1});
    bench.bus().restart(bench.cameraReference());
    const auto second = bench.plugAnother("Second");
    bench.start();
    EXPECT_EQ(bench.window().windowTitle().toStdString(), "Quelvo");
    EXPECT_EQ(listed(bench), "Studio 10, Second 11, > Studio");
    bench.bus().unplug(second);
    EXPECT_EQ(listed(bench), "Studio 10, > ");  // whichever left
    bench.bus().plug(second);
    EXPECT_EQ(listed(bench), "Studio 10, Second 11, > ");  // others were listed
    bench.bus().unplug(bench.cameraReference());
    EXPECT_EQ(listed(bench), "Second 11, > ");
    EXPECT_THAT(bench.log().take(),
                ElementsAre("kkk:3", removed, "Second", "processAddDeviceEventWithNotification123",
                            "0x14210000e7a14c11", removed, "Studio", removed));
    EXPECT_THAT(bench.requests(), IsEmpty());
    bench.bus().unplug(second);
    EXPECT_EQ(listed(bench), "> ");
    bench.bus().plug(second);
    EXPECT_EQ(listed(bench), "Second 11, > Second");  // the first to arrive is shown
    bench.bus().plug(bench.cameraReference());
    const auto twin = bench.plugAnother("Studio");
    EXPECT_EQ(listed(bench), "Second 11, Studio 10, Studio 11, > Second");
    bench.bus().unplug(twin);  // of equal names the first listed goes
    EXPECT_EQ(listed(bench), "Second 11, Studio 11, > ");
}

TEST(CameraListTest, CutsLongTextsBetweenCharactersAndFindsThemAgain) {
    WindowBench bench(studio());
    bench.log().take();
    const std::string start(62, 'n');
    const auto camera = bench.plugAnother(start + "\u00e9 with more behind");
    EXPECT_EQ(listed(bench), "Studio 10, " + start + " 11, > Studio");
    bench.list("m_cbxDevice").setCurrentIndex(1);
    bench.click("OnBtnOpenCamera:");
    EXPECT_FALSE(camera->requests().empty());
    bench.bus().unplug(camera);
    EXPECT_EQ(listed(bench), "Studio 10, > ");

    // Neither a terminal's commands nor a change of direction get into the list or the log.
    const std::string shown = "Bro\uFFFDken  [1m \u05D0  b ";
    const auto broken = bench.plugAnother("Bro\xFFken\n\x1B[1m \u05D0\u202E\u2066b\u2028");
    EXPECT_EQ(listed(bench), "Studio 10, " + shown + " 11, > ");
    bench.bus().unplug(broken);
    EXPECT_EQ(listed(bench), "Studio 10, > ");
    EXPECT_THAT(bench.log().take("Bro"), ElementsAre(shown));

    // Of an identifier the end stays; of two bytes of one character both go.
    const std::string end = std::string(54, 'x') + "e7a14c10";
    EXPECT_EQ(entryUniqueID("0x" + end), 'x' + end);
    EXPECT_EQ(entryUniqueID("0\u00e9" + end), end);
}

TEST(OpenTest, FillsThePagesAndShowsVideoWhichTheNextOpenReplaces) {
    WindowBench bench;
    const auto& preview = bench.controller().m_previewWnd;
    bench.camera().setFaults({.videoOpen = "The camera is in use."});
    bench.log().take();
    bench.click("OnBtnOpenCamera:");
    // First the processing unit, then the preview and the vendor page, last the camera terminal.
    const auto requests = bench.requests();
    ASSERT_EQ(requests.size(), 11U + 1 + 2 * 13 + 6);
    EXPECT_EQ(requests[11], "a1 81 0b00 0300 1 | 01");
    EXPECT_EQ(requests[12], "a1 85 0900 1000 24 | 18 00");
    auto lines = bench.log().take();
    std::erase_if(lines,
                  [](auto& line) { return line[0] == 'b' || line.starts_with("g_length2"); });
    EXPECT_THAT(lines.at(11), testing::MatchesRegex("viewLayer = <CALayer: 0x[0-9a-f]+>"));
    EXPECT_EQ(lines.at(12), "ERROR: trying to open camera: The camera is in use.");
    auto* widget = bench.find<QWidget>("m_previewWnd");
    EXPECT_EQ(widget->grab().toImage().pixelColor(widget->rect().center()), QColor(153, 153, 153));

    bench.camera().setFaults({});
    const std::weak_ptr<CALayer> layer = preview.layer();
    const std::weak_ptr<AVCaptureSession> session = g_captureSession;
    bench.click("OnBtnOpenCamera:");
    EXPECT_TRUE(layer.expired());
    EXPECT_TRUE(session.expired());
    bench.awaitPicture();
    std::set<std::shared_ptr<const platform::VideoFrame>> held{g_captureSession->latestFrame()};
    const auto first = *held.begin();
    const auto pixels = pixelsOf(*first);
    EXPECT_TRUE(WindowBench::waitUntil([&] {
        held.insert(g_captureSession->latestFrame());
        return held.size() == 4;
    }));
    EXPECT_EQ(pixelsOf(*first), pixels) << "what is held is not drawn over";
    EXPECT_EQ(g_captureSession->latestFrame()->width, 640);
    // The layers follow the window's size.
    const double before = preview.bounds().height;
    bench.window().resize(bench.window().size() + QSize(120, 40));
    EXPECT_TRUE(WindowBench::waitUntil([&] { return preview.bounds().height != before; }));
    const NSRect& shown = preview.layer()->sublayers().at(0)->frame();
    EXPECT_EQ(std::pair(shown.width, shown.height),
              std::pair(preview.bounds().width, preview.bounds().height));
    bench.bus().failVideo(bench.cameraReference(), "The camera went away.");
    EXPECT_TRUE(WindowBench::waitUntil([&] { return bench.log().count("ERROR") > 0; }));
    EXPECT_THAT(bench.log().take("ERROR"),
                ElementsAre("ERROR: trying to open camera: The camera went away."));
}

TEST(OpenTest, TakesTheFirstOfEqualNamesOrATypedIdentifier) {
    WindowBench bench;
    const auto open = [&](const std::string& text) {
        bench.list("m_cbxDevice").setEditText(QString::fromStdString(text));
        bench.requests();
        bench.click("OnBtnOpenCamera:");
    };
    const auto twin = bench.plugAnother("Quelvo Studio Camera");
    bench.list("m_cbxDevice").setCurrentIndex(1);
    bench.click("OnBtnOpenCamera:");
    EXPECT_FALSE(bench.requests().empty());
    EXPECT_THAT(twin->requests(), IsEmpty());
    open("0x14210000e7a14c11");
    EXPECT_FALSE(twin->requests().empty());
    EXPECT_THAT(bench.requests(), IsEmpty());
    bench.awaitPicture();
    // Only the ids are right: the control channel opens, and no video is found.
    const auto layer = bench.controller().m_previewWnd.layer();
    open("e7a14c10");
    EXPECT_FALSE(bench.requests().empty());
    EXPECT_EQ(bench.controller().m_previewWnd.layer(), layer);
    EXPECT_EQ(g_captureSession->latestFrame(), nullptr);
    // The open camera's going changes nothing but the list.
    bench.bus().unplug(bench.cameraReference());
    EXPECT_EQ(bench.shown("m_textGama"), "238");
    open("");  // both pages are filled from no camera
    EXPECT_EQ(bench.shown("m_lableVersion"), "Get device info failed!");
}

}  // namespace
