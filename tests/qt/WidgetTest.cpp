// How the widgets work: when and how often they send their actions, and what they show.

#include <gmock/gmock.h>

#include <QAccessible>
#include <QBackingStore>
#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
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

    void setByAssistance(int value) {
        QAccessible::queryAccessibleInterface(&slider)->valueInterface()->setCurrentValue(value);
    }

    /// Leaves the slider at a value whose action waits.
    void moveTwice(int value) {
        setByAssistance(1);
        fixture.requests();
        setByAssistance(value);
    }

    /// Lets the event loop turn until nothing is left to do.
    static void rest() {
        for (int turn = 0; turn < 5; ++turn)
            QCoreApplication::processEvents();
    }

    /// What was sent to the camera once all that is queued has been handled.
    std::vector<std::string> sent() {
        QCoreApplication::processEvents();
        return fixture.requests();
    }

    WindowFixture fixture;
    QSlider& slider = fixture.slider("m_sliderBright");
};

TEST_F(ActionTest, WheelWithoutFocusScrollsThePageInstead) {
    fixture.window().resize(1024, 400);
    auto& list = fixture.list("m_SpinRgain");
    auto& area = *fixture.find<QScrollArea>("vendorPageScroll");
    sent();  // the window is laid out by now
    turnWheel(list);
    turnWheel(fixture.slider("m_SliderRgain"));
    EXPECT_GT(area.verticalScrollBar()->value(), 0);
    EXPECT_THAT(sent(), IsEmpty());
    list.setFocus();
    turnWheel(list);
    EXPECT_THAT(sent(), ElementsAre(_, "21 01 0f00 1000 2 | ff ff"));
    list.showPopup();  // and the same item chosen again
    QTest::keyClick(QApplication::activePopupWidget()->focusWidget(), Qt::Key_Return);
    EXPECT_THAT(sent(), ElementsAre(_, "21 01 0f00 1000 2 | ff ff"));
}

TEST_F(ActionTest, OnlyTheFirstActionGoesAtOnceAndOneThatWaitsGoesOnceAndBeforeAllElse) {
    setByAssistance(41);
    EXPECT_THAT(fixture.requests(), ElementsAre("21 01 0200 0300 2 | 29 00"));
    setByAssistance(42);
    setByAssistance(43);  // the one before is not worth sending any more
    EXPECT_THAT(fixture.requests(), IsEmpty());
    EXPECT_THAT(sent(), ElementsAre("21 01 0200 0300 2 | 2b 00"));
    moveTwice(4);
    fixture.slider("m_sliderGama").setValue(100);
    setByAssistance(3);
    EXPECT_THAT(sent(), ElementsAre("21 01 0200 0300 2 | 03 00", "21 01 0900 0300 2 | 64 00"));
    moveTwice(5);
    fixture.button("m_btn50HZ").click();
    EXPECT_THAT(sent(), ElementsAre("21 01 0200 0300 2 | 05 00", "21 01 0500 0300 1 | 01"));
    moveTwice(7);
    fixture.controller().m_sliderBright.setIntValue(9);
    EXPECT_EQ(slider.value(), 9);
    EXPECT_THAT(sent(), ElementsAre("21 01 0200 0300 2 | 07 00")) << "9 is the program's own";
    moveTwice(8);
    fixture.window().close();
    EXPECT_THAT(fixture.requests(), ElementsAre("21 01 0200 0300 2 | 08 00"));
    moveTwice(6);
    fixture.stop();  // the window goes
    EXPECT_THAT(fixture.requests(), ElementsAre("21 01 0200 0300 2 | 06 00"));
}

TEST_F(ActionTest, ASlowCameraSkipsPositionsOfADragButNeverTheLast) {
    fixture.camera().setFaults({.delay = std::chrono::milliseconds(20)});
    fixture.camera().setWait([&](auto) {  // over the first position it takes its time
        for (int position = 100; slider.value() < 180; ++position)
            slider.setSliderPosition(position);
    });
    slider.setSliderDown(true);
    slider.setSliderPosition(60);
    EXPECT_THAT(sent(), ElementsAre("21 01 0200 0300 2 | 3c 00", "21 01 0200 0300 2 | b4 00"));
    slider.setSliderPosition(199);
    fixture.requests();
    slider.setSliderPosition(200);
    EXPECT_THAT(fixture.requests(), IsEmpty());
    slider.setSliderDown(false);
    EXPECT_THAT(fixture.requests(), ElementsAre("21 01 0200 0300 2 | c8 00"));
}

// What the hand does meanwhile comes from the display, after what the program has posted itself.
TEST_F(ActionTest, KeysThatComeWhileTheCameraAnswersAreOneChange) {
    const auto pressKeys = [&] {
        for (int i = 0; i < 10; ++i)
            QCoreApplication::postEvent(
                &slider, new QKeyEvent(QEvent::KeyPress, Qt::Key_Right, Qt::NoModifier));
    };
    slider.setSliderPosition(60);
    rest();
    fixture.requests();
    fixture.camera().setFaults({.delay = std::chrono::milliseconds(20)});
    fixture.camera().setWait([&](auto) {
        if (slider.value() == 61)
            QMetaObject::invokeMethod(&slider, pressKeys, Qt::QueuedConnection);
    });
    QTest::keyClick(&slider, Qt::Key_Right);
    rest();
    EXPECT_THAT(fixture.requests(),
                ElementsAre("21 01 0200 0300 2 | 3d 00", "21 01 0200 0300 2 | 47 00"));
}

TEST_F(ActionTest, ToAssistanceAToggleIsAClick) {
    for (const auto& [name, request] : {std::pair{"m_btnFlipV", "21 01 1800 1000 1 | 01"},
                                        {"m_btnFlipV", "21 01 1800 1000 1 | 00"},
                                        {"m_btnStylePC", "21 01 0d00 1000 1 | 03"},
                                        {"m_btnStylePC", "21 01 0d00 1000 1 | 03"}}) {
        QAccessible::queryAccessibleInterface(&fixture.button(name))
            ->actionInterface()
            ->doAction(QAccessibleActionInterface::toggleAction());
        EXPECT_THAT(sent(), ElementsAre(_, request));
    }
}

TEST(WidgetTest, ToggleShowsOnlyItsImageAndTheComboBoxKeepsWhatIsTyped) {
    WindowFixture fixture;
    auto& toggle = *fixture.find<QToolButton>("m_btnFlipV");
    EXPECT_EQ(toggle.icon().pixmap(toggle.iconSize(), 2.0).size(), toggle.iconSize() * 2);
    const QImage off = toggle.grab().toImage();
    fixture.controller().m_btnFlipV.setState(1);
    EXPECT_EQ(toggle.grab().toImage(), off) << "only the image says that it is on";

    auto& cameras = fixture.list("m_cbxDevice");
    cameras.setFocus();
    cameras.clearEditText();
    QTest::keyClicks(&cameras, "quelvo studio camera");
    QTest::keyClick(&cameras, Qt::Key_Return);
    QTest::keyClick(&cameras, Qt::Key_Tab);
    EXPECT_EQ(fixture.controller().m_cbxDevice.stringValue(), "quelvo studio camera");
    EXPECT_EQ(cameras.count(), 1);
}

/// A layer that shows one red picture, twice as wide as high at first, and tells where it wrote it.
struct RedLayer : CALayer {
    int width = 4;
    int height = 2;
    std::uint32_t colour = 0xFFFF0000;
    mutable const void* written = nullptr;
    std::shared_ptr<const platform::VideoFrame> contents() const override {
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
    layer->setBackgroundColor({0, 1, 0, 1});
    {
        WindowFixture fixture;
        auto& widget = *fixture.find<QWidget>("m_previewWnd");
        EXPECT_TRUE(widget.findChild<QLabel*>()->isVisible());
        fixture.controller().m_previewWnd.setLayer(layer);
        EXPECT_FALSE(widget.findChild<QLabel*>()->isVisible());
        const QImage shown = widget.grab().toImage();
        const int middle = widget.height() / 2;
        const int half = widget.width() / 4;  // of the picture's height
        EXPECT_EQ(shown.pixelColor(2, middle), QColor(Qt::red));
        EXPECT_EQ(shown.pixelColor(widget.width() - 3, middle + half - 3), QColor(Qt::red));
        EXPECT_EQ(shown.pixelColor(widget.width() / 2, middle - half - 3), QColor(Qt::green));
        // A picture of nearly the place's own size is written into the window's memory.
        const auto& memory = dynamic_cast<QImage&>(*widget.backingStore()->paintDevice());
        layer->width = widget.width() - 3;
        layer->height = 477;
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
