// How the widgets work: when they send their actions, and what they show.

#include <gmock/gmock.h>

#include <QAccessible>
#include <QBackingStore>
#include <QLabel>
#include <QLineEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabWidget>
#include <QTest>
#include <QToolButton>
#include <QWheelEvent>

#include "platform/CALayer.h"
#include "platform/backend/CaptureBackend.h"
#include "tests/support/WindowFixture.h"

namespace {

using testing::_;
using testing::ElementsAre;
using testing::IsEmpty;

class ActionTest : public testing::Test {
  protected:
    ActionTest() { fixture.open(); }

    static void turnWheel(QWidget& widget) {
        const QPointF center = widget.rect().center();
        QWheelEvent event(center, widget.mapToGlobal(center), {}, {0, -120}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QSpontaneKeyEvent::setSpontaneous(&event);  // only the system's events go on to parents
        QCoreApplication::instance()->notify(&widget, &event);
    }

    WindowFixture fixture;
};

TEST_F(ActionTest, WheelWithoutFocusScrollsThePageInstead) {
    fixture.window().resize(1024, 400);
    auto& list = fixture.list("m_SpinRgain");
    auto& area = *fixture.find<QScrollArea>("vendorPageScroll");
    fixture.sent();  // the window is laid out by now
    turnWheel(list);
    turnWheel(fixture.slider("m_SliderRgain"));
    EXPECT_GT(area.verticalScrollBar()->value(), 0);
    EXPECT_THAT(fixture.sent(), IsEmpty());
    list.setFocus();
    turnWheel(list);
    EXPECT_THAT(fixture.sent(), ElementsAre(_, "21 01 0f00 1000 2 | ff ff"));
    list.showPopup();  // and the same item chosen again
    QTest::keyClick(QApplication::activePopupWidget()->focusWidget(), Qt::Key_Return);
    EXPECT_THAT(fixture.sent(), ElementsAre(_, "21 01 0f00 1000 2 | ff ff"));
}

TEST_F(ActionTest, ToAssistanceAToggleIsAClick) {
    for (const auto& [name, request] : {std::pair{"m_btnFlipV", "21 01 1800 1000 1 | 01"},
                                        {"m_btnFlipV", "21 01 1800 1000 1 | 00"},
                                        {"m_btnStylePC", "21 01 0d00 1000 1 | 03"},
                                        {"m_btnStylePC", "21 01 0d00 1000 1 | 03"}}) {
        QAccessible::queryAccessibleInterface(&fixture.button(name))
            ->actionInterface()
            ->doAction(QAccessibleActionInterface::toggleAction());
        EXPECT_THAT(fixture.sent(), ElementsAre(_, request));
    }
}

TEST(WidgetTest, ToggleShowsOnlyItsImageAndTheComboBoxKeepsWhatIsTyped) {
    WindowFixture fixture;
    fixture.find<QTabWidget>("pages")->setCurrentIndex(1);
    auto& toggle = *fixture.find<QToolButton>("m_btnFlipV");
    EXPECT_EQ(toggle.icon().pixmap(toggle.iconSize(), 2.0).size(), toggle.iconSize() * 2);
    const QImage off = toggle.grab().toImage();
    fixture.controller().m_btnFlipV.setState(1);
    EXPECT_EQ(toggle.grab().toImage(), off) << "only the image says that it is on";

    auto& cameras = fixture.list("m_cbxDevice");
    cameras.setFocus();
    cameras.clearEditText();
    EXPECT_EQ(cameras.lineEdit()->placeholderText(), "Choose a camera");
    QTest::keyClicks(&cameras, "quelvo studio camera");
    QTest::keyClick(&cameras, Qt::Key_Return);
    QTest::keyClick(&cameras, Qt::Key_Tab);
    EXPECT_EQ(fixture.controller().m_cbxDevice.stringValue(), "quelvo studio camera");
    EXPECT_EQ(cameras.count(), 1);
    fixture.plugAnother("Quelvo Studio Camera");
    cameras.setCurrentIndex(1);
    QTest::keyClick(&cameras, Qt::Key_Return);
    EXPECT_EQ(cameras.currentIndex(), 1) << "not the first of that name";
}

TEST(WidgetTest, AnEmptyReferenceAndOneToAnotherKindReadAsNothing) {
    WindowFixture fixture;
    const NSView other = fixture.controller().m_textBright;
    for (const NSView& named : {NSView(), other}) {
        NSSlider slider;
        NSComboBox box;
        NSImageView view;
        for (NSView* reference : std::initializer_list<NSView*>{&slider, &box, &view})
            reference->connect(named);
        slider.setIntValue(5);
        EXPECT_EQ(slider.intValue() + box.numberOfItems() + NSButton().state(), 0);
        EXPECT_EQ(NSPopUpButton().title() + box.stringValue() + box.itemObjectValueAtIndex(0), "");
        EXPECT_EQ(view.layer(), nullptr);
        EXPECT_EQ(view.bounds().x + view.bounds().y + view.bounds().width, 0);
    }
}

/// A layer that shows one red picture, twice as wide as high at first, and tells where it wrote it.
struct RedLayer : CALayer {
    int width = 4;
    int height = 2;
    std::uint32_t colour = 0xFFFF0000;
    mutable const void* written = nullptr;
    std::shared_ptr<const platform::VideoFrame> contents() const override {
        if (width == 0)
            return nullptr;
        return std::make_shared<platform::VideoFrame>(platform::VideoFrame{
            width, height, [this](std::byte* pixels, int bytesPerLine) {
                written = pixels;
                for (int y = 0; y < height; ++y, pixels += bytesPerLine)
                    std::fill_n(reinterpret_cast<std::uint32_t*>(pixels), width, colour);
            }});
    }
};

TEST(WidgetTest, PreviewShowsThePictureAsItIsAndItsLayerOutlivesIt) {
    const auto layer = std::make_shared<RedLayer>();
    layer->setBackgroundColor({0.9, 0.9, 0.9, 1});
    {
        WindowFixture fixture;
        auto& widget = *fixture.find<QWidget>("m_previewWnd");
        const auto& hint = *widget.findChild<QLabel*>();
        layer->width = 0;
        fixture.controller().m_previewWnd.setLayer(layer);
        EXPECT_TRUE(hint.isVisible());
        EXPECT_EQ(hint.palette().color(QPalette::WindowText), Qt::black);
        layer->setBackgroundColor({0.4, 0.4, 0.4, 1});
        EXPECT_EQ(hint.palette().color(QPalette::WindowText), Qt::white);
        layer->setBackgroundColor({0, 1, 0, 1});
        layer->width = 4;
        layer->setNeedsDisplay();
        EXPECT_FALSE(hint.isVisible());
        const QImage shown = widget.grab().toImage();
        const int middle = widget.height() / 2;
        const int half = widget.width() / 4;  // of the picture's height
        EXPECT_EQ(shown.pixelColor(2, middle), QColor(Qt::red));
        EXPECT_EQ(shown.pixelColor(widget.width() - 3, middle + half - 3), QColor(Qt::red));
        EXPECT_EQ(shown.pixelColor(widget.width() / 2, middle - half - 3), QColor(Qt::green));
        // A picture of nearly the place's own size is written into the window's memory, but not
        // into memory that keeps its pixels in another form.
        const auto& memory = dynamic_cast<QImage&>(*widget.backingStore()->paintDevice());
        layer->width = widget.width() - 3;
        layer->height = 477;
        QImage other(widget.size(), QImage::Format_RGBA8888);
        widget.render(&other);
        EXPECT_EQ(other.pixelColor(100, middle), QColor(Qt::red));
        layer->setNeedsDisplay();
        QCoreApplication::processEvents();
        const auto* first = static_cast<const uchar*>(layer->written);
        ASSERT_TRUE(first > memory.constBits() &&
                    first < memory.constScanLine(memory.height() - 1));
        EXPECT_EQ((first - memory.constBits()) % 32, 0);
        EXPECT_EQ(memory.bytesPerLine() % 32, 0);
        layer->width = widget.width();
        layer->height = widget.width() / 4;
        layer->setNeedsDisplay();
        QCoreApplication::processEvents();
        const auto colour = [&](int x, int y) {
            return memory.pixelColor(widget.mapTo(&fixture.window(), QPoint(x, y)));
        };
        const int top = (widget.height() - layer->height) / 2;
        const QPoint there = widget.mapTo(&fixture.window(), QPoint(0, top));
        EXPECT_EQ(layer->written, memory.constScanLine(there.y()) + std::ptrdiff_t{4} * there.x());
        layer->colour = 0xFF0000FF;
        widget.repaint(QRect(3, top + 1, 5, 5));  // this part alone
        EXPECT_EQ(colour(3, top + 1), QColor(Qt::blue));
        EXPECT_EQ(colour(0, top), QColor(Qt::red));
        EXPECT_EQ(colour(widget.width() - 1, top + layer->height - 1), QColor(Qt::red));
        EXPECT_EQ(colour(0, top - 1), QColor(Qt::green));
        EXPECT_NE(colour(-1, top), QColor(Qt::red));
    }
    layer->setNeedsDisplay();
}

}  // namespace
