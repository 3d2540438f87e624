// What the widgets and the boxes show, and what they give back.

#include <gmock/gmock.h>

#include <QLabel>
#include <QTest>
#include <QToolButton>

#include "platform/CALayer.h"
#include "platform/CFUserNotification.h"
#include "platform/backend/CaptureBackend.h"
#include "tests/support/WindowBench.h"

namespace {

TEST(WidgetTest, ToggleShowsOnlyItsImageAndTheComboBoxKeepsWhatIsTyped) {
    WindowBench bench;
    auto& toggle = *bench.find<QToolButton>("m_btnFlipV");
    EXPECT_EQ(toggle.icon().pixmap(toggle.iconSize(), 2.0).size(), toggle.iconSize() * 2);
    const QImage off = toggle.grab().toImage();
    bench.controller().m_btnFlipV.setState(1);
    EXPECT_EQ(toggle.grab().toImage(), off) << "only the image says that it is on";

    auto& cameras = bench.list("m_cbxDevice");
    cameras.setFocus();
    cameras.clearEditText();
    QTest::keyClicks(&cameras, "quelvo studio camera");
    QTest::keyClick(&cameras, Qt::Key_Return);
    QTest::keyClick(&cameras, Qt::Key_Tab);
    EXPECT_EQ(bench.controller().m_cbxDevice.stringValue(), "quelvo studio camera");
    EXPECT_EQ(cameras.count(), 1);
}

/// Shows a box, presses `key` in it, or closes it for none, and returns the response.
CFOptionFlags ask(const std::optional<std::string>& alternate, Qt::Key key) {
    QTimer answer;
    QObject::connect(&answer, &QTimer::timeout, [&] {
        answer.stop();
        auto& box = dynamic_cast<QMessageBox&>(*QApplication::activeModalWidget());
        key == Qt::Key_unknown ? static_cast<void>(box.close()) : QTest::keyClick(&box, key);
    });
    answer.start(0);
    CFOptionFlags response = 99;
    CFUserNotificationDisplayAlert(0, 1, "Notice", "Sure?", "OK", alternate, response);
    return response;
}

TEST(WidgetTest, OnlyReturnAndABoxesLoneButtonAgree) {
    EXPECT_EQ(ask("Cancel", Qt::Key_Return), 99U) << "without a window there is no box";
    WindowBench bench;
    EXPECT_EQ(ask("Cancel", Qt::Key_Return), kCFUserNotificationDefaultResponse);
    EXPECT_EQ(ask("Cancel", Qt::Key_Escape), kCFUserNotificationAlternateResponse);
    EXPECT_EQ(ask("Cancel", Qt::Key_unknown), kCFUserNotificationAlternateResponse);
    EXPECT_EQ(ask({}, Qt::Key_unknown), kCFUserNotificationDefaultResponse);
}

/// A layer that shows one red picture, twice as wide as high.
struct RedLayer : CALayer {
    std::vector<std::uint32_t> pixels = std::vector<std::uint32_t>(8, 0x00ff0000);
    std::shared_ptr<const platform::VideoFrame> contents() const override {
        return std::make_shared<platform::VideoFrame>(platform::VideoFrame{
            4, 2, 16, reinterpret_cast<const std::byte*>(pixels.data()), nullptr});
    }
};

TEST(WidgetTest, PreviewShowsThePictureAsItIsAndItsLayerOutlivesIt) {
    const auto layer = std::make_shared<RedLayer>();
    layer->setBackgroundColor({0, 1, 0, 1});
    {
        WindowBench bench;
        auto& widget = *bench.find<QWidget>("m_previewWnd");
        EXPECT_TRUE(widget.findChild<QLabel*>()->isVisible());
        bench.controller().m_previewWnd.setLayer(layer);
        EXPECT_FALSE(widget.findChild<QLabel*>()->isVisible());
        const QImage shown = widget.grab().toImage();
        const int middle = widget.height() / 2;
        const int half = widget.width() / 4;  // of the picture's height
        EXPECT_EQ(shown.pixelColor(2, middle), QColor(Qt::red));
        EXPECT_EQ(shown.pixelColor(widget.width() - 3, middle + half - 3), QColor(Qt::red));
        EXPECT_EQ(shown.pixelColor(widget.width() / 2, middle - half - 3), QColor(Qt::green));
    }
    layer->setNeedsDisplay();
}

}  // namespace
