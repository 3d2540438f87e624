// How the widgets work: when they send their actions, and what they show.

#include <gmock/gmock.h>

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

void turnWheel(QWidget& widget) {
    const QPointF center = widget.rect().center();
    QWheelEvent event(center, widget.mapToGlobal(center), {}, {0, -120}, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QSpontaneKeyEvent::setSpontaneous(&event);  // only the system's events go on to parents
    QCoreApplication::instance()->notify(&widget, &event);
}

TEST(WidgetTest, WheelWithoutFocusScrollsThePageInstead) {
    WindowFixture fixture;
    fixture.open();
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

TEST(WidgetTest, ToggleShowsOnlyItsImageAndTheComboBoxKeepsWhatIsTyped) {
    WindowFixture fixture;
    fixture.find<QTabWidget>("pages")->setCurrentIndex(1);
    auto& toggle = *fixture.find<QToolButton>("m_btnFlipV");
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

/// A layer with one picture of a single colour, which tells where it wrote it.
struct PlainLayer : CALayer {
    QSize size;
    QRgb colour = QColorConstants::Red.rgb();
    mutable const void* written = nullptr;
    std::shared_ptr<const platform::VideoFrame> contents() const override {
        if (size.isEmpty())
            return nullptr;
        return std::make_shared<platform::VideoFrame>(platform::VideoFrame{
            size.width(), size.height(), [this](std::byte* pixels, int bytesPerLine) {
                written = pixels;
                for (int y = 0; y < size.height(); ++y, pixels += bytesPerLine)
                    std::fill_n(reinterpret_cast<QRgb*>(pixels), size.width(), colour);
            }});
    }
    void show(const QSize& newSize) {
        size = newSize;
        setNeedsDisplay();
        QCoreApplication::processEvents();
    }
};

TEST(WidgetTest, PreviewShowsThePictureAsItIsAndItsLayerOutlivesIt) {
    const auto layer = std::make_shared<PlainLayer>();
    layer->setBackgroundColor({0.9, 0.9, 0.9, 1});
    {
        WindowFixture fixture;
        auto& widget = *fixture.find<QWidget>("m_previewWnd");
        const auto& hint = *widget.findChild<QLabel*>();
        fixture.controller().m_previewWnd.setLayer(layer);
        EXPECT_TRUE(hint.isVisible());
        EXPECT_EQ(hint.palette().color(QPalette::WindowText), Qt::black);
        layer->setBackgroundColor({0.4, 0.4, 0.4, 1});
        EXPECT_EQ(hint.palette().color(QPalette::WindowText), Qt::white);
        layer->setBackgroundColor({0, 1, 0, 1});
        const QSize quarter(widget.width(), widget.width() / 4);
        layer->show(quarter / 8);  // enlarged as far as there is room
        EXPECT_FALSE(hint.isVisible());
        const QImage shown = widget.grab().toImage();
        const int top = (widget.height() - quarter.height()) / 2;
        EXPECT_EQ(shown.pixelColor(2, top + 3), QColor(Qt::red));
        EXPECT_EQ(shown.pixelColor(quarter.width() - 3, widget.height() - top - 4),
                  QColor(Qt::red));
        EXPECT_EQ(shown.pixelColor(quarter.width() / 2, top - 3), QColor(Qt::green));

        // A picture of the place's own size is written into the window's memory, but not into
        // memory that keeps its pixels in another form.
        layer->show(quarter);
        QImage other(widget.size(), QImage::Format_RGBA8888);
        widget.render(&other);
        EXPECT_EQ(other.pixelColor(2, top + 3), QColor(Qt::red));
        const auto& memory = dynamic_cast<QImage&>(*widget.backingStore()->paintDevice());
        const QPoint there = widget.mapTo(&fixture.window(), QPoint(0, top));
        layer->colour = QColorConstants::Blue.rgb();
        widget.repaint(QRect(3, top + 1, 5, 5));  // this part alone
        EXPECT_EQ(memory.pixelColor(there + QPoint(3, 1)), QColor(Qt::blue));
        EXPECT_EQ(memory.pixelColor(there), QColor(Qt::red));
        layer->show(quarter);
        EXPECT_EQ(layer->written, memory.constScanLine(there.y()) + std::ptrdiff_t{4} * there.x());
        EXPECT_EQ(memory.pixelColor(there + QPoint(0, -1)), QColor(Qt::green));
        EXPECT_NE(memory.pixelColor(there + QPoint(-1, 0)), QColor(Qt::blue));
    }
    layer->setNeedsDisplay();
}

}  // namespace
