// When and how often the widgets send their actions, however they are worked.

#include <gmock/gmock.h>

#include <QAccessible>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QWheelEvent>

#include "tests/support/WindowBench.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ActionTest : public testing::Test {
  protected:
    ActionTest() {
        bench.open();
        sent();  // the window is laid out by now
    }

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

    /// What was sent to the camera once all that is queued has been handled.
    std::vector<std::string> sent() {
        QCoreApplication::processEvents();
        return written();
    }

    /// What was sent to the camera since the last call.
    std::vector<std::string> written() {
        std::vector<std::string> requests = bench.requests();
        std::erase_if(requests, [](const std::string& text) { return text.starts_with("a1"); });
        return requests;
    }

    static std::string bright(int low) {
        return wireText({0x21, 1, 0x0200, 0x0300, 2, {static_cast<std::uint8_t>(low), 0}, 0});
    }

    WindowBench bench;
    QSlider& slider = bench.slider("m_sliderBright");
};

TEST_F(ActionTest, SliderSendsForKeyWheelAndAssistanceButNotForTheProgram) {
    bench.find<QTabWidget>("pages")->setCurrentIndex(1);
    slider.setFocus();
    QTest::keyClick(&slider, Qt::Key_Right);
    EXPECT_THAT(sent(), ElementsAre(bright(1)));
    setByAssistance(41);
    setByAssistance(42);  // the one before is not worth sending any more
    EXPECT_THAT(sent(), ElementsAre(bright(42)));
    turnWheel(slider);
    EXPECT_THAT(sent(), ElementsAre(bright(slider.value())));
    EXPECT_LT(slider.value(), 42);
    const ViewController& references = bench.controller();
    references.m_sliderBright.setIntValue(20);
    references.m_btnStylePC.setState(1);
    references.m_SpinRgain.setTitle("1");
    EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(ActionTest, WheelWithoutFocusScrollsThePageInstead) {
    bench.window().resize(1024, 400);
    auto& list = bench.list("m_SpinRgain");
    auto& area = *bench.find<QScrollArea>("vendorPageScroll");
    sent();
    turnWheel(list);
    turnWheel(bench.slider("m_SliderRgain"));
    EXPECT_GT(area.verticalScrollBar()->value(), 0);
    EXPECT_THAT(sent(), IsEmpty());
    list.setFocus();
    turnWheel(list);
    EXPECT_THAT(sent(), ElementsAre("21 01 0f00 1000 2 | ff ff"));
    list.showPopup();  // and the same item chosen again
    QTest::keyClick(QApplication::activePopupWidget()->focusWidget(), Qt::Key_Return);
    EXPECT_THAT(sent(), ElementsAre("21 01 0f00 1000 2 | ff ff"));
}

TEST_F(ActionTest, WaitingActionGoesBeforeAllElse) {
    slider.setSliderDown(true);
    slider.setSliderPosition(60);
    EXPECT_THAT(written(), IsEmpty());
    slider.setSliderDown(false);
    EXPECT_THAT(written(), ElementsAre(bright(60)));
    setByAssistance(5);
    bench.button("m_btn50HZ").click();
    EXPECT_THAT(sent(), ElementsAre(bright(5), "21 01 0500 0300 1 | 01"));
    setByAssistance(7);
    bench.controller().m_sliderBright.setIntValue(9);
    EXPECT_EQ(slider.value(), 9);
    EXPECT_THAT(sent(), ElementsAre(bright(7)));
    setByAssistance(8);
    bench.window().close();
    EXPECT_THAT(written(), ElementsAre(bright(8)));
    ViewController late;
    auto other = platform::InterfaceWindow::load(late);
    other->widget().findChild<QSlider*>("m_sliderBright")->setValue(11);
    other.reset();
    EXPECT_THAT(written(), ElementsAre(bright(11)));
}

TEST_F(ActionTest, ButtonsSendTheirStateOncePerClickOrKeyOrToggle) {
    const auto work = [this](const char* name, int way) {
        auto& button = bench.button(name);
        if (way == 0)
            QTest::mouseClick(&button, Qt::LeftButton, {}, QPoint(8, button.height() / 2));
        else if (way == 1)
            QTest::keyClick(&button, Qt::Key_Space);
        else
            QAccessible::queryAccessibleInterface(&button)->actionInterface()->doAction(
                QAccessibleActionInterface::toggleAction());
        return sent();
    };
    for (const int way : {0, 1, 2}) {
        EXPECT_THAT(work("m_btnFlipV", way), ElementsAre("21 01 1800 1000 1 | 01"));
        EXPECT_THAT(work("m_btnFlipV", way), ElementsAre("21 01 1800 1000 1 | 00"));
        EXPECT_THAT(work("m_btnStylePC", way), ElementsAre("21 01 0d00 1000 1 | 03"));
        EXPECT_THAT(work("m_btnStylePC", way), ElementsAre("21 01 0d00 1000 1 | 03"));
        EXPECT_EQ(bench.shown("m_btnStylePC"), "on");
        EXPECT_THAT(work("m_btnSytleFace", way), ElementsAre("21 01 0d00 1000 1 | 05"));
        EXPECT_EQ(bench.shown("m_btnStylePC"), "off");
    }
}

}  // namespace
