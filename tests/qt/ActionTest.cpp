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
    ActionTest() { bench.open(); }

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

    WindowBench bench;
    QSlider& slider = bench.slider("m_sliderBright");
};

TEST_F(ActionTest, WheelWithoutFocusScrollsThePageInstead) {
    bench.window().resize(1024, 400);
    auto& list = bench.list("m_SpinRgain");
    auto& area = *bench.find<QScrollArea>("vendorPageScroll");
    sent();  // the window is laid out by now
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

TEST_F(ActionTest, AWaitingActionIsSentOnceAndBeforeAllElse) {
    setByAssistance(41);
    setByAssistance(42);  // the one before is not worth sending any more
    EXPECT_THAT(sent(), ElementsAre("21 01 0200 0300 2 | 2a 00"));
    bench.controller().m_sliderBright.setIntValue(20);
    EXPECT_THAT(sent(), IsEmpty()) << "the program's own changes are not sent";
    slider.setSliderDown(true);
    slider.setSliderPosition(60);
    EXPECT_THAT(written(), IsEmpty());
    slider.setSliderDown(false);
    EXPECT_THAT(written(), ElementsAre("21 01 0200 0300 2 | 3c 00"));
    setByAssistance(5);
    bench.button("m_btn50HZ").click();
    EXPECT_THAT(sent(), ElementsAre("21 01 0200 0300 2 | 05 00", "21 01 0500 0300 1 | 01"));
    setByAssistance(7);
    bench.controller().m_sliderBright.setIntValue(9);
    EXPECT_EQ(slider.value(), 9);
    EXPECT_THAT(sent(), ElementsAre("21 01 0200 0300 2 | 07 00"));
    setByAssistance(8);
    bench.window().close();
    EXPECT_THAT(written(), ElementsAre("21 01 0200 0300 2 | 08 00"));
}

TEST_F(ActionTest, ToAssistanceAToggleIsAClick) {
    const auto toggle = [this](const char* name) {
        QAccessible::queryAccessibleInterface(&bench.button(name))
            ->actionInterface()
            ->doAction(QAccessibleActionInterface::toggleAction());
        return sent();
    };
    EXPECT_THAT(toggle("m_btnFlipV"), ElementsAre("21 01 1800 1000 1 | 01"));
    EXPECT_THAT(toggle("m_btnFlipV"), ElementsAre("21 01 1800 1000 1 | 00"));
    EXPECT_THAT(toggle("m_btnStylePC"), ElementsAre("21 01 0d00 1000 1 | 03"));
    EXPECT_THAT(toggle("m_btnStylePC"), ElementsAre("21 01 0d00 1000 1 | 03"));
    EXPECT_EQ(bench.shown("m_btnStylePC"), "on");
}

}  // namespace
