// When and how often the widgets send their actions, however they are worked.

#include <QAbstractButton>
#include <QComboBox>
#include <QScrollArea>
#include <QScrollBar>
#include <QSlider>
#include <QStyle>
#include <QStyleOptionSlider>
#include <QWheelEvent>

#include "tests/qt/TestWindow.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ActionTest : public WindowTest {
  protected:
    static void turnWheel(QWidget& widget, int notches) {
        const QPointF center = widget.rect().center();
        QWheelEvent event(center, widget.mapToGlobal(center), {}, {0, 120 * notches}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QSpontaneKeyEvent::setSpontaneous(&event);  // only the system's events go on to parents
        QCoreApplication::instance()->notify(&widget, &event);
    }

    static void setByAssistance(QWidget& widget, int value) {
        QAccessible::queryAccessibleInterface(&widget)->valueInterface()->setCurrentValue(value);
    }

    static void toggleByAssistance(QWidget& widget) {
        auto* actions = QAccessible::queryAccessibleInterface(&widget)->actionInterface();
        ASSERT_TRUE(actions->actionNames().contains(QAccessibleActionInterface::toggleAction()));
        actions->doAction(QAccessibleActionInterface::toggleAction());
    }

    /// Queues a movement of the mouse with its button held.
    static void queueDrag(QWidget& widget, QPoint to) {
        QCoreApplication::postEvent(
            &widget, new QMouseEvent(QEvent::MouseMove, to, widget.mapToGlobal(to), Qt::NoButton,
                                     Qt::LeftButton, Qt::NoModifier));
    }

    static QPoint knobOf(const QSlider& slider) {
        QStyleOptionSlider option;
        option.initFrom(&slider);
        option.minimum = slider.minimum();
        option.maximum = slider.maximum();
        option.sliderPosition = option.sliderValue = slider.value();
        option.orientation = Qt::Horizontal;
        return slider.style()
            ->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, &slider)
            .center();
    }
};

TEST_F(ActionTest, SliderSendsForKeyWheelAndAssistance) {
    auto& slider = find<QSlider>("m_sliderBright");
    slider.setFocus();
    QTest::keyClick(&slider, Qt::Key_Right);
    EXPECT_THAT(takeSent(), ElementsAre("bright 1"));
    turnWheel(slider, -1);
    const int turned = slider.value();
    EXPECT_LT(turned, 1);
    EXPECT_THAT(takeSent(), ElementsAre("bright " + std::to_string(turned)));
    setByAssistance(slider, 42);
    EXPECT_THAT(takeSent(), ElementsAre("bright 42"));
    QTest::keyClick(&slider, Qt::Key_Home);
    EXPECT_THAT(takeSent(), ElementsAre("bright -255"));
}

TEST_F(ActionTest, WheelWithoutFocusScrollsThePageInstead) {
    root().resize(1024, 560);
    auto& slider = find<QSlider>("m_sliderBright");
    auto& list = find<QComboBox>("m_SpinRgain");
    controller.redList.addItemWithTitle("1");
    controller.redList.addItemWithTitle("2");
    find<QComboBox>("m_cbxDevice").setFocus();
    auto* area = root().findChild<QScrollArea*>("vendorPageScroll");
    area->widget()->setMinimumHeight(2000);
    runQueued();
    turnWheel(slider, -1);
    turnWheel(list, -1);
    EXPECT_EQ(slider.value(), 0);
    EXPECT_EQ(controller.redList.title(), "1");
    EXPECT_GT(area->verticalScrollBar()->value(), 0);
    EXPECT_THAT(takeSent(), IsEmpty());
    list.setFocus();
    turnWheel(list, -1);
    EXPECT_THAT(takeSent(), ElementsAre("red 2"));
}

TEST_F(ActionTest, DragSendsAsItGoesAndSkipsPositionsTheHandHasLeft) {
    auto& slider = find<QSlider>("m_sliderBright");
    const QPoint knob = knobOf(slider);
    QTest::mousePress(&slider, Qt::LeftButton, {}, knob);
    queueDrag(slider, knob + QPoint(10, 0));
    EXPECT_THAT(takeSent(), testing::SizeIs(1));
    // While one action keeps the main thread, the hand moves on.
    controller.onBright = [&] {
        for (int step = 30; step <= 60; step += 10)
            queueDrag(slider, knob + QPoint(step, 0));
    };
    queueDrag(slider, knob + QPoint(20, 0));
    runQueued();
    const auto sent = takeSent();
    ASSERT_THAT(sent, testing::SizeIs(2));
    EXPECT_EQ(sent.back(), "bright " + std::to_string(slider.value()));
    queueDrag(slider, knob + QPoint(70, 0));
    QCoreApplication::sendPostedEvents(&slider);
    EXPECT_THAT(controller.sent, IsEmpty());
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, knob + QPoint(70, 0));
    EXPECT_THAT(controller.sent, ElementsAre("bright " + std::to_string(slider.value())));
}

TEST_F(ActionTest, WaitingActionGoesBeforeOtherWidgetsProgramAndClosing) {
    setByAssistance(find<QSlider>("m_sliderBright"), 5);
    setByAssistance(find<QSlider>("m_sliderContrast"), 6);
    find<QAbstractButton>("buttonOpenCamera").click();
    EXPECT_THAT(controller.sent, ElementsAre("bright 5", "contrast 6", "open 0"));
    takeSent();
    setByAssistance(find<QSlider>("m_sliderBright"), 7);
    controller.bright.setIntValue(9);
    EXPECT_THAT(controller.sent, ElementsAre("bright 7"));
    EXPECT_EQ(controller.bright.intValue(), 9);
    EXPECT_THAT(takeSent(), ElementsAre("bright 7"));
    setByAssistance(find<QSlider>("m_sliderBright"), 8);
    root().close();
    EXPECT_THAT(controller.sent, ElementsAre("bright 8"));
    takeSent();
    setByAssistance(find<QSlider>("m_sliderBright"), 9);
    window.reset();
    EXPECT_THAT(controller.sent, ElementsAre("bright 9"));
}

TEST_F(ActionTest, NothingIsSentForWhatTheProgramSets) {
    controller.bright.setIntValue(20);
    controller.bright.setMaxValue(10);
    controller.pc.setState(1);
    controller.face.setState(1);
    controller.face.setState(0);
    controller.autoFocus.setState(1);
    controller.redList.addItemWithTitle("1");
    controller.redList.addItemWithTitle("2");
    controller.redList.setTitle("2");
    controller.redList.removeAllItems();
    controller.cameras.addItemWithObjectValue("A");
    controller.cameras.selectItemAtIndex(0);
    controller.cameras.removeItemAtIndex(0);
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(ActionTest, ExclusiveButtonsSendForTheOneThatIsWorkedOnly) {
    auto& pc = find<QAbstractButton>("m_btnStylePC");
    auto& face = find<QAbstractButton>("m_btnSytleFace");
    QTest::mouseClick(&pc, Qt::LeftButton, {}, QPoint(8, pc.height() / 2));
    EXPECT_THAT(takeSent(), ElementsAre("pc 1"));
    QTest::mouseClick(&pc, Qt::LeftButton, {}, QPoint(8, pc.height() / 2));
    EXPECT_THAT(takeSent(), ElementsAre("pc 1"));
    face.setFocus();
    QTest::keyClick(&face, Qt::Key_Space);
    EXPECT_THAT(takeSent(), ElementsAre("face 1"));
    EXPECT_EQ(controller.pc.state(), 0);
    toggleByAssistance(pc);
    EXPECT_THAT(takeSent(), ElementsAre("pc 1"));
    EXPECT_EQ(controller.face.state(), 0);
}

TEST_F(ActionTest, CheckBoxAndToggleSendTheirNewStateOnce) {
    auto& box = find<QAbstractButton>("m_btnAutoFocus");
    QTest::mouseClick(&box, Qt::LeftButton, {}, QPoint(8, box.height() / 2));
    EXPECT_THAT(takeSent(), ElementsAre("autoFocus 1"));
    toggleByAssistance(box);
    EXPECT_THAT(takeSent(), ElementsAre("autoFocus 0"));
    auto& flip = find<QAbstractButton>("m_btnFlipV");
    QTest::mouseClick(&flip, Qt::LeftButton);
    toggleByAssistance(flip);
    QTest::keyClick(&root(), Qt::Key_I, Qt::AltModifier);
    ASSERT_TRUE(QTest::qWaitFor([this] { return controller.sent.size() == 3; }));
    EXPECT_THAT(takeSent(), ElementsAre("flip 1", "flip 0", "flip 1"));
}

TEST_F(ActionTest, ListsSendForEachChoiceOfTheUser) {
    for (const char* title : {"2", "1", "0"})
        controller.redList.addItemWithTitle(title);
    auto& list = find<QComboBox>("m_SpinRgain");
    list.setFocus();
    QTest::keyClick(&list, Qt::Key_Down);
    EXPECT_THAT(takeSent(), ElementsAre("red 1"));
    list.showPopup();  // and the same item chosen again
    QTest::keyClick(QApplication::activePopupWidget()->focusWidget(), Qt::Key_Return);
    EXPECT_THAT(takeSent(), ElementsAre("red 1"));

    controller.cameras.addItemWithObjectValue("A");
    controller.cameras.addItemWithObjectValue("B");
    auto& cameras = find<QComboBox>("m_cbxDevice");
    cameras.setFocus();
    QTest::keyClick(&cameras, Qt::Key_Down);
    EXPECT_THAT(takeSent(), ElementsAre("camera A"));
}

}  // namespace
