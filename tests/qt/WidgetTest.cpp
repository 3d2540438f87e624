// What the operations of the widget references do to the widgets, and what they read.

#include <gmock/gmock.h>

#include <QBackingStore>
#include <QLabel>
#include <QTest>
#include <QToolButton>

#include "platform/CALayer.h"
#include "platform/backend/CaptureBackend.h"
#include "tests/support/WindowBench.h"

namespace {

TEST(WidgetTest, ListsHoldEachTitleOnceAndTheComboBoxKeepsWhatIsTyped) {
    WindowBench bench;
    const NSPopUpButton& list = bench.controller().m_SpinRgain;
    list.addItemWithTitle("10");
    EXPECT_EQ(bench.list("m_SpinRgain").count(), 21);
    EXPECT_EQ(bench.list("m_SpinRgain").itemText(20), "10");
    list.setTitle("no such title");
    EXPECT_EQ(list.title(), "0");

    auto& box = bench.list("m_cbxDevice");
    box.setFocus();
    box.clearEditText();
    QTest::keyClicks(&box, "quelvo studio camera");
    QTest::keyClick(&box, Qt::Key_Return);
    QTest::keyClick(&box, Qt::Key_Tab);
    EXPECT_EQ(bench.controller().m_cbxDevice.stringValue(), "quelvo studio camera");
    EXPECT_EQ(box.count(), 1);
}

TEST(WidgetTest, ButtonsKnowMixedStatesAndShowTheirImageSharpAndFlat) {
    WindowBench bench;
    const NSButton& box = bench.controller().m_btnAutoFocus;
    for (const bool allowed : {false, true}) {
        box.setAllowsMixedState(allowed);
        box.setState(-1);
        EXPECT_EQ(box.state(), allowed ? -1 : 1);
    }
    auto& toggle = *bench.find<QToolButton>("m_btnFlipV");
    EXPECT_EQ(toggle.icon().pixmap(toggle.iconSize(), 2.0).size(), toggle.iconSize() * 2);
    const QImage off = toggle.grab().toImage();
    bench.controller().m_btnFlipV.setState(1);
    EXPECT_EQ(toggle.grab().toImage(), off) << "only the image says that it is on";
}

/// A layer that shows one red picture, twice as wide as high at first.
struct RedLayer : CALayer {
    int width = 4;
    int height = 2;
    std::shared_ptr<const platform::VideoFrame> contents() const override {
        return std::make_shared<platform::VideoFrame>(platform::VideoFrame{
            width, height, [this](std::byte* pixels, int bytesPerLine) {
                for (int y = 0; y < height; ++y, pixels += bytesPerLine)
                    std::fill_n(reinterpret_cast<std::uint32_t*>(pixels), width, 0xFFFF0000);
            }});
    }
};

TEST(WidgetTest, PreviewShowsThePictureAsItIsAndItsLayerOutlivesIt) {
    const auto layer = std::make_shared<RedLayer>();
    NSImageView gone;
    {
        WindowBench bench;
        auto& widget = *bench.find<QWidget>("m_previewWnd");
        EXPECT_TRUE(widget.findChild<QLabel*>()->isVisible());
        layer->setBackgroundColor({0, 1, 0, 1});
        gone.connect(bench.controller().m_previewWnd);
        gone.setLayer(layer);
        EXPECT_FALSE(widget.findChild<QLabel*>()->isVisible());
        const QImage shown = widget.grab().toImage();
        const int middle = widget.height() / 2;
        const int half = widget.width() / 4;  // of the picture's height
        EXPECT_EQ(shown.pixelColor(2, middle), QColor(Qt::red));
        EXPECT_EQ(shown.pixelColor(widget.width() - 3, middle + half - 3), QColor(Qt::red));
        EXPECT_EQ(shown.pixelColor(widget.width() / 2, middle - half - 3), QColor(Qt::green));
        // A picture of the place's own size is written into the window's memory.
        layer->width = widget.width();
        layer->height = widget.width() / 4;
        layer->setNeedsDisplay();
        QCoreApplication::processEvents();
        const auto& memory = dynamic_cast<QImage&>(*widget.backingStore()->paintDevice());
        const auto colour = [&](int x, int y) {
            return memory.pixelColor(widget.mapTo(&bench.window(), QPoint(x, y)));
        };
        const int top = (widget.height() - layer->height) / 2;
        EXPECT_EQ(colour(0, top), QColor(Qt::red));
        EXPECT_EQ(colour(widget.width() - 1, top + layer->height - 1), QColor(Qt::red));
        EXPECT_EQ(colour(0, top - 1), QColor(Qt::green));
        EXPECT_NE(colour(-1, top), QColor(Qt::red));
        NSSlider wrong;
        wrong.connect(bench.controller().m_cbxDevice);
        wrong.setIntValue(3);
        EXPECT_EQ(wrong.intValue(), 0);
    }
    layer->setNeedsDisplay();
    EXPECT_EQ(gone.bounds().width, 0);
}

}  // namespace
