// The camera list, which follows cameras as they come and go, and the open button.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "camera/UVCCameraControl.h"
#include "devices/CameraList.h"
#include "devices/CaptureSession.h"
#include "platform/AVCaptureSession.h"
#include "platform/backend/CaptureBackend.h"
#include "tests/support/WindowFixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* removed = "processRemoveDeviceEventWithNotification";

/// The listed cameras, each with the end of its identifier, and what the combo box shows:
/// "Studio 10, Second 11, > Studio".
std::string listed(WindowFixture& fixture) {
    QString text;
    const QComboBox& box = fixture.list("m_cbxDevice");
    for (const CameraEntry& entry : g_deviceList)
        text += box.itemText(static_cast<int>(&entry - g_deviceList.data())) + ' ' +
                &entry.uniqueID.at(16) + ", ";
    text += "> " + box.currentText();
    return text.replace("Quelvo Studio Camera", "Studio").toStdString();
}

TEST(CameraListTest, FollowsTheCamerasAndLeavesTheirMicrophonesOut) {
    WindowFixture fixture(virtualcam::studioCamera(), false);
    setInCamera(fixture.camera(), {16, XU_AUDIO_SWITCH}, {1});
    fixture.bus().restart(fixture.cameraReference());
    const auto second = fixture.plugAnother("Second");
    fixture.list("m_cbxDevice").addItem("an item of the interface file");
    fixture.start();
    EXPECT_EQ(listed(fixture), "Studio 10, Second 11, > Studio");
    fixture.bus().unplug(second);
    EXPECT_EQ(listed(fixture), "Studio 10, > ");  // whichever left
    fixture.bus().plug(second);
    EXPECT_EQ(listed(fixture), "Studio 10, Second 11, > ");  // others were listed
    fixture.bus().unplug(fixture.cameraReference());
    EXPECT_EQ(listed(fixture), "Second 11, > ");
    EXPECT_THAT(fixture.log().take(),
                ElementsAre("kkk:3", removed, "Second", "processAddDeviceEventWithNotification123",
                            "0x14210000e7a14c11", removed, "Quelvo Studio Camera", removed));
    EXPECT_THAT(fixture.requests(), IsEmpty());
    fixture.bus().unplug(second);
    EXPECT_EQ(listed(fixture), "> ");
    fixture.bus().plug(second);
    EXPECT_EQ(listed(fixture), "Second 11, > Second");  // the first to arrive is shown
    fixture.bus().plug(fixture.cameraReference());
    const auto twin = fixture.plugAnother("Quelvo Studio Camera");
    EXPECT_EQ(listed(fixture), "Second 11, Studio 10, Studio 11, > Second");
    fixture.bus().unplug(twin);  // of equal names the first listed goes
    EXPECT_EQ(listed(fixture), "Second 11, Studio 11, > ");
    fixture.stop();
    fixture.log().take();
    fixture.bus().unplug(second);  // of which nobody is left to be told
    EXPECT_THAT(fixture.log().take(), IsEmpty());
}

TEST(CameraListTest, CutsLongTextsBetweenCharactersAndFindsThemAgain) {
    WindowFixture fixture;
    fixture.log().take();
    const std::string start(62, 'n');
    const auto camera = fixture.plugAnother(start + "\u00e9 with more behind");
    EXPECT_EQ(listed(fixture), "Studio 10, " + start + " 11, > Studio");
    fixture.list("m_cbxDevice").setCurrentIndex(1);
    fixture.click("OnBtnOpenCamera:");
    EXPECT_FALSE(camera->requests().empty());
    fixture.bus().unplug(camera);
    EXPECT_EQ(listed(fixture), "Studio 10, > ");

    // What would scramble a line is shown and logged as a space.
    const auto broken = fixture.plugAnother("Bro\xFFken\n\u202Eb");
    EXPECT_EQ(listed(fixture), "Studio 10, Bro\uFFFDken  b 11, > ");
    fixture.bus().unplug(broken);
    EXPECT_THAT(fixture.log().take("Bro"), ElementsAre("Bro\uFFFDken  b"));

    // Of an identifier the end stays; of two bytes of one character both go.
    const std::string end = std::string(54, 'x') + "e7a14c10";
    EXPECT_EQ(entryUniqueID("0x" + end), 'x' + end);
    EXPECT_EQ(entryUniqueID("0\u00e9" + end), end);
    EXPECT_EQ(entryName(std::string(64, 'n')).size(), 63U) << "a zero follows in the entry";
}

TEST(OpenTest, FillsThePagesAndShowsVideoWhichTheNextOpenReplaces) {
    WindowFixture fixture;
    const auto& preview = fixture.controller().m_previewWnd;
    fixture.camera().setFaults({.videoOpen = "The camera is in use."});
    fixture.log().take();
    fixture.click("OnBtnOpenCamera:");
    EXPECT_THAT(fixture.log().take("ERROR"),
                ElementsAre("ERROR: trying to open camera: The camera is in use."));
    auto* widget = fixture.find<QWidget>("m_previewWnd");
    EXPECT_EQ(widget->grab().toImage().pixelColor(5, 5), QColor(153, 153, 153));

    // A channel that can't be opened takes nothing from the picture.
    fixture.camera().setFaults({.deviceCreatePlugIn = EBUSY});
    fixture.click("OnBtnOpenCamera:");
    EXPECT_EQ(fixture.shown("m_lableVersion"), "Get device info failed!");
    fixture.awaitPicture();

    fixture.camera().setFaults({});
    const std::weak_ptr<CALayer> layer = preview.layer();
    const std::weak_ptr<AVCaptureSession> session = g_captureSession;
    fixture.click("OnBtnOpenCamera:");
    EXPECT_TRUE(layer.expired());
    EXPECT_TRUE(session.expired());
    fixture.awaitPicture();
    EXPECT_EQ(g_captureSession->latestFrame()->width, 640);
    // The layers follow the window's size.
    const double before = preview.bounds().height;
    fixture.window().resize(fixture.window().size() + QSize(120, 40));
    EXPECT_TRUE(WindowFixture::waitUntil([&] { return preview.bounds().height != before; }));
    const NSRect& shown = preview.layer()->sublayers().at(0)->frame();
    EXPECT_EQ(std::pair(shown.width, shown.height),
              std::pair(preview.bounds().width, preview.bounds().height));
}

TEST(OpenTest, TakesTheFirstOfEqualNamesOrATypedIdentifier) {
    WindowFixture fixture;
    const auto open = [&](const std::string& text) {
        fixture.list("m_cbxDevice").setEditText(QString::fromStdString(text));
        fixture.requests();
        fixture.click("OnBtnOpenCamera:");
    };
    const auto twin = fixture.plugAnother("Quelvo Studio Camera");
    fixture.list("m_cbxDevice").setCurrentIndex(1);
    fixture.click("OnBtnOpenCamera:");
    EXPECT_FALSE(fixture.requests().empty());
    EXPECT_THAT(twin->requests(), IsEmpty());
    open("0x14210000e7a14c11");
    EXPECT_FALSE(twin->requests().empty());
    EXPECT_THAT(fixture.requests(), IsEmpty());
    fixture.awaitPicture();
    // Only the ids are right: the control channel opens, and no video is found.
    const auto layer = fixture.controller().m_previewWnd.layer();
    open("e7a14c10");
    EXPECT_FALSE(fixture.requests().empty());
    EXPECT_EQ(fixture.controller().m_previewWnd.layer(), layer);
    EXPECT_EQ(g_captureSession->latestFrame(), nullptr);
    fixture.bus().unplug(fixture.cameraReference());
    EXPECT_TRUE(g_uvcCamera && g_captureSession) << "what is open stays until the next open";
    EXPECT_EQ(fixture.shown("m_textGama"), "238");
    open("");  // both pages are filled from no camera
    EXPECT_EQ(fixture.shown("m_lableVersion"), "Get device info failed!");
}

}  // namespace
