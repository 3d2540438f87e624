// When sliders send their actions, and how often.

#include <gmock/gmock.h>

#include "tests/support/WindowFixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SliderPaceTest : public testing::Test {
  protected:
    SliderPaceTest() { fixture.open(); }

    WindowFixture fixture;
    QSlider& slider = fixture.slider("m_sliderBright");
};

TEST_F(SliderPaceTest, TheLastPositionGoesOnceAndBeforeWhatIsDoneNext) {
    slider.setValue(42);
    slider.setValue(43);  // the one before is not worth sending any more
    EXPECT_THAT(fixture.requests(), IsEmpty());
    EXPECT_THAT(fixture.sent(), ElementsAre("21 01 0200 0300 2 | 2b 00"));
    slider.setValue(4);
    fixture.slider("m_sliderGama").setValue(100);
    slider.setValue(3);
    EXPECT_THAT(fixture.sent(),
                ElementsAre("21 01 0200 0300 2 | 03 00", "21 01 0900 0300 2 | 64 00"));
    slider.setValue(5);
    fixture.button("m_btn50HZ").click();
    EXPECT_THAT(fixture.sent(), ElementsAre("21 01 0200 0300 2 | 05 00", "21 01 0500 0300 1 | 01"));
    slider.setValue(7);
    fixture.controller().m_sliderBright.setIntValue(9);
    EXPECT_EQ(slider.value(), 9);
    EXPECT_THAT(fixture.sent(), ElementsAre("21 01 0200 0300 2 | 07 00"))
        << "9 is the program's own";
    slider.setValue(8);
    fixture.window().close();
    EXPECT_THAT(fixture.requests(), ElementsAre("21 01 0200 0300 2 | 08 00"));
    slider.setValue(6);
    fixture.stop();  // the window goes
    EXPECT_THAT(fixture.requests(), ElementsAre("21 01 0200 0300 2 | 06 00"));
}

TEST_F(SliderPaceTest, ASlowCameraSkipsPositionsOfADragButNeverTheLast) {
    fixture.camera().setFaults({.delay = std::chrono::milliseconds(20)});
    fixture.camera().setWait([&](auto) {  // over the first position it takes its time
        for (int position = 100; slider.value() < 180; ++position)
            slider.setSliderPosition(position);
    });
    slider.setSliderDown(true);
    slider.setSliderPosition(60);
    EXPECT_THAT(fixture.sent(),
                ElementsAre("21 01 0200 0300 2 | 3c 00", "21 01 0200 0300 2 | b4 00"));
    slider.setSliderPosition(200);
    EXPECT_THAT(fixture.requests(), IsEmpty());
    slider.setSliderDown(false);
    EXPECT_THAT(fixture.requests(), ElementsAre("21 01 0200 0300 2 | c8 00"));
}

}  // namespace
