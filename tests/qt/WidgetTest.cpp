// What the operations of the widget references do to the widgets, and what they read.

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPixmap>
#include <QSlider>
#include <QToolButton>
#include <cstdint>

#include "platform/backend/CaptureBackend.h"
#include "tests/qt/TestWindow.h"

namespace {

using WidgetTest = WindowTest;

TEST_F(WidgetTest, SliderKeepsItsValueWithinItsRange) {
    const NSSlider& slider = controller.redGain;
    slider.setIntValue(-10);
    slider.setMinValue(0);
    slider.setMaxValue(10);
    slider.setNumberOfTickMarks(11);
    EXPECT_EQ(slider.intValue(), 0);
    slider.setIntValue(99);
    EXPECT_EQ(slider.intValue(), 10);
    auto& widget = find<QSlider>("m_SliderRgain");
    EXPECT_EQ(widget.tickInterval(), 1);
    slider.setNumberOfTickMarks(3);
    EXPECT_EQ(widget.tickInterval(), 5);
    slider.setMaxValue(4);
    EXPECT_EQ(slider.intValue(), 4);
    slider.setEnabled(false);
    EXPECT_FALSE(widget.isEnabled());
}

TEST_F(WidgetTest, PopUpHoldsEachTitleOnce) {
    const NSPopUpButton& list = controller.redList;
    for (const char* title : {"2", "1", "0", "2"})
        list.addItemWithTitle(title);
    auto& widget = find<QComboBox>("m_SpinRgain");
    EXPECT_EQ(widget.count(), 3);
    EXPECT_EQ(widget.itemText(2), "2");
    list.setTitle("1");
    EXPECT_EQ(list.title(), "1");
    list.setTitle("5");
    EXPECT_EQ(list.title(), "1");
    list.removeAllItems();
    EXPECT_EQ(list.title(), "");
}

TEST_F(WidgetTest, ComboBoxSelectsNothingByItself) {
    const NSComboBox& box = controller.cameras;
    box.addItemWithObjectValue("Cam");
    EXPECT_EQ(box.stringValue(), "");
    box.addItemWithObjectValue("Cam");
    box.addItemWithObjectValue("Überwachung");
    EXPECT_EQ(box.numberOfItems(), 3);
    EXPECT_EQ(box.itemObjectValueAtIndex(2), "Überwachung");
    EXPECT_EQ(box.itemObjectValueAtIndex(3), "");
    box.selectItemAtIndex(0);
    box.removeItemAtIndex(0);
    EXPECT_EQ(box.stringValue(), "Cam");
    EXPECT_EQ(find<QComboBox>("m_cbxDevice").currentIndex(), -1);
    box.setStringValue("0x1234abcd");
    box.removeItemAtIndex(0);
    box.removeItemAtIndex(0);
    EXPECT_EQ(box.numberOfItems(), 0);
    EXPECT_EQ(box.stringValue(), "0x1234abcd");
}

TEST_F(WidgetTest, ComboBoxKeepsWhatTheUserTypes) {
    controller.cameras.addItemWithObjectValue("Camera");
    auto& widget = find<QComboBox>("m_cbxDevice");
    widget.setFocus();
    QTest::keyClicks(&widget, "camera");
    QTest::keyClick(&widget, Qt::Key_Return);
    QTest::keyClick(&widget, Qt::Key_Tab);
    EXPECT_FALSE(widget.hasFocus());
    EXPECT_EQ(controller.cameras.stringValue(), "camera");
    EXPECT_EQ(controller.cameras.numberOfItems(), 1);
}

TEST_F(WidgetTest, ButtonStates) {
    controller.pc.setState(1);
    controller.face.setState(7);
    EXPECT_EQ(controller.face.state(), 1);
    EXPECT_EQ(controller.pc.state(), 0);
    controller.face.setState(0);
    EXPECT_EQ(controller.face.state(), 0);
    controller.autoFocus.setState(-1);
    EXPECT_EQ(controller.autoFocus.state(), 1);
    controller.autoFocus.setAllowsMixedState(true);
    controller.autoFocus.setState(-1);
    EXPECT_EQ(controller.autoFocus.state(), -1);
    controller.autoFocus.setIntValue(0);
    EXPECT_EQ(controller.autoFocus.state(), 0);
}

TEST_F(WidgetTest, ToggleShowsItsImageSharpOnEveryScreen) {
    auto& widget = find<QToolButton>("m_btnFlipV");
    controller.flip.setImage(NSImage::imageNamed("button_on.png"));
    controller.flip.setBordered(false);
    EXPECT_TRUE(widget.autoRaise());
    const QPixmap single = widget.icon().pixmap(widget.iconSize(), 1.0);
    const QPixmap twice = widget.icon().pixmap(widget.iconSize(), 2.0);
    EXPECT_EQ(single.size(), widget.iconSize());
    EXPECT_EQ(twice.size(), widget.iconSize() * 2);
    const QImage on = widget.grab().toImage();
    controller.flip.setImage(NSImage::imageNamed("button_off.png"));
    EXPECT_NE(widget.grab().toImage(), on);
    EXPECT_FALSE(NSImage::imageNamed("no_such.png"));
    controller.flip.setImage(std::nullopt);
    EXPECT_TRUE(widget.icon().isNull());
}

TEST_F(WidgetTest, TextIsNeverMarkup) {
    controller.brightText.setStringValue("<b>7</b>");
    auto& label = find<QLabel>("m_textBright");
    EXPECT_EQ(label.text(), "<b>7</b>");
    EXPECT_EQ(label.textFormat(), Qt::PlainText);
}

/// A layer that shows one red picture, twice as wide as high.
struct RedLayer : CALayer {
    std::vector<std::uint32_t> pixels = std::vector<std::uint32_t>(8, 0x00ff0000);
    std::shared_ptr<const platform::VideoFrame> contents() const override {
        return std::make_shared<platform::VideoFrame>(platform::VideoFrame{
            4, 2, 16, reinterpret_cast<const std::byte*>(pixels.data()), nullptr});
    }
};

TEST_F(WidgetTest, ImageViewPaintsItsLayersAndFollowsItsSize) {
    auto& widget = find<QWidget>("m_previewWnd");
    auto* hint = widget.findChild<QLabel*>();
    EXPECT_TRUE(hint->isVisible());
    const auto base = CALayer::layer();
    controller.preview.setLayer(base);
    EXPECT_FALSE(hint->isVisible());
    EXPECT_EQ(controller.preview.layer(), base);
    base->setBackgroundColor({0, 1, 0, 1});
    const auto picture = std::make_shared<RedLayer>();
    picture->setFrame(controller.preview.bounds());
    picture->setAutoresizingMask(kCALayerWidthSizable | kCALayerHeightSizable);
    base->addSublayer(picture);
    root().resize(1100, 700);
    runQueued();
    ASSERT_LT(widget.width(), 2 * widget.height());  // so the picture fills the width only
    EXPECT_EQ(picture->frame().width, widget.width());
    const QImage shown = widget.grab().toImage();
    const int middle = widget.height() / 2;
    const int half = widget.width() / 4;  // of the picture's height
    EXPECT_EQ(shown.pixelColor(2, middle), QColor(Qt::red));
    EXPECT_EQ(shown.pixelColor(widget.width() - 3, middle + half - 3), QColor(Qt::red));
    EXPECT_EQ(shown.pixelColor(widget.width() / 2, middle - half - 3), QColor(Qt::green));
    controller.preview.setLayer(nullptr);
    EXPECT_TRUE(hint->isVisible());
}

TEST_F(WidgetTest, ReferencesWithoutTheirWidgetDoNothing) {
    NSSlider wrong;
    wrong.connect(controller.cameras);
    NSPopUpButton notThisList;
    notThisList.connect(controller.cameras);
    const auto layer = CALayer::layer();
    controller.preview.setLayer(layer);
    for (const bool windowGone : {false, true}) {
        if (windowGone)
            window.reset();
        controller.absent.setIntValue(3);
        EXPECT_EQ(controller.absent.intValue(), 0);
        wrong.setIntValue(3);
        EXPECT_EQ(wrong.intValue(), 0);
        notThisList.addItemWithTitle("1");
        EXPECT_EQ(notThisList.title(), "");
        EXPECT_EQ(controller.cameras.numberOfItems(), 0);
    }
    layer->setNeedsDisplay();
    controller.bright.setIntValue(3);
    EXPECT_EQ(controller.bright.intValue(), 0);
    EXPECT_EQ(controller.pc.state(), 0);
    EXPECT_EQ(controller.preview.bounds().width, 0);
    EXPECT_EQ(controller.cameras.stringValue(), "");
    controller.setTitle("Later");
}

TEST_F(WidgetTest, ControllerTitleIsTheWindows) {
    controller.setTitle("Café");
    EXPECT_EQ(root().windowTitle(), "Café");
}

}  // namespace
