// Every action of both pages, worked through its widget: what the camera gets, in which order, and
// what the other widgets show.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>

#include "camera/UVCCameraControl.h"
#include "pages/vendor/ShowAlert.h"
#include "pages/vendor/VendorPage.h"
#include "tests/support/WindowBench.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

/// A window whose camera is open, all automatic modes off and the log and requests empty.
class ActionTest : public testing::Test {
  protected:
    ActionTest() {
        bench_.open();
        bench_.set({3, PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL}, {0});
        bench_.set({1, CT_FOCUS_AUTO_CONTROL}, {0});
        bench_.set({1, CT_AE_MODE_CONTROL}, {1});
        loadPages();
    }

    void loadPages() {
        InitXUPage(bench_.controller());
        bench_.controller().ReadConfig_UVC();
        bench_.controller().InitUVCPage();
        bench_.requests();
        bench_.log().take();
    }

    WindowBench bench_;
};

struct StandardSlider {
    const char* slider;
    const char* text;
    int number;
    std::vector<std::string> requests;
};

TEST_F(ActionTest, StandardSlidersShowTheirNumberAndSendTheirValue) {
    for (const StandardSlider& row : std::vector<StandardSlider>{
             {"m_sliderBright", "m_textBright", 12, {"21 01 0200 0300 2 | 0c 00"}},
             {"m_sliderContrast", "m_textContrast", 3, {"21 01 0300 0300 2 | 03 00"}},
             {"m_sliderHue", "m_textHue", 5, {"21 01 0600 0300 2 | 05 00"}},
             {"m_sliderSaturation", "m_textSaturation", 150, {"21 01 0700 0300 2 | 96 00"}},
             {"m_sliderSharpness", "m_textSharpness", 2, {"21 01 0800 0300 2 | 02 00"}},
             {"m_sliderGama", "m_textGama", 300, {"21 01 0900 0300 2 | 2c 01"}},
             {"m_sliderWB", "m_textWb", 5000, {"21 01 0a00 0300 2 | 88 13"}},
             {"m_sliderBackLight", "m_textBackLight", 2, {"21 01 0100 0300 2 | 02 00"}},
             {"m_sliderGain",
              "m_textGain",
              9,
              {"21 01 0400 0300 2 | 09 00", "a1 81 0400 0300 2 | 09 00"}},
             {"m_sliderZoom", "m_textZoom", 50, {"21 01 0b00 0100 2 | 32 00"}},
             {"m_sliderFocus", "m_textFocus", 77, {"21 01 0600 0100 2 | 4d 00"}},
             {"m_sliderAutoExposure", "m_textExposure", -5, {"21 01 0400 0100 4 | 4d 01 00 00"}},
             {"m_sliderPano", "m_textPano", -2, {"21 01 0d00 0100 8 | e0 e3 ff ff 00 00 00 00"}},
             {"m_sliderTile", "m_textTile", 10, {"21 01 0d00 0100 8 | e0 e3 ff ff a0 8c 00 00"}}}) {
        bench_.moveSlider(row.slider, row.number);
        EXPECT_EQ(bench_.shown(row.text), std::to_string(row.number)) << row.slider;
        EXPECT_EQ(bench_.requests(), row.requests) << row.slider;
    }
    bench_.moveSlider("m_sliderAutoExposure", -6);
    bench_.moveSlider("m_sliderBright", -10);
    bench_.camera().setFaults({.stalled = {{3, PU_HUE_CONTROL}}});
    bench_.moveSlider("m_sliderHue", -7);  // refused; the window shows it all the same
    EXPECT_THAT(bench_.requests(),
                ElementsAre("21 01 0400 0100 4 | a7 00 00 00", "21 01 0200 0300 2 | f6 ff",
                            "21 01 0600 0300 2 | f9 ff !"));
    EXPECT_EQ(bench_.shown("m_textHue"), "-7");
}

TEST_F(ActionTest, AnExposureNumberOutsideTheTableIsSentAsItIs) {
    bench_.slider("m_sliderAutoExposure").setMaximum(0);
    bench_.moveSlider("m_sliderAutoExposure", -4);
    EXPECT_THAT(bench_.requests(), ElementsAre("21 01 0400 0100 4 | fc ff ff ff !"));
}

TEST_F(ActionTest, AutomaticModesSendTheModeBeforeTheManualValue) {
    const std::string focus = "21 01 0600 0100 2 | a0 00";
    bench_.click("m_btnAutoWB");
    EXPECT_THAT(bench_.requests(), ElementsAre("21 01 0b00 0300 1 | 01"));
    EXPECT_FALSE(bench_.isEnabled("m_sliderWB"));
    bench_.controller().m_textWb.setStringValue("left alone");
    bench_.click("m_btnAutoWB");
    EXPECT_THAT(bench_.requests(),
                ElementsAre("21 01 0b00 0300 1 | 00", "21 01 0a00 0300 2 | 64 19"));
    EXPECT_TRUE(bench_.isEnabled("m_sliderWB"));
    EXPECT_EQ(bench_.shown("m_textWb"), "left alone");

    // The camera refuses the manual value while its automatic mode holds the control.
    bench_.click("m_btnAutoFocus");
    EXPECT_THAT(bench_.requests(), ElementsAre("21 01 0800 0100 1 | 01", focus + " !"));
    EXPECT_FALSE(bench_.isEnabled("m_sliderFocus"));
    bench_.click("m_btnAutoFocus");
    EXPECT_THAT(bench_.requests(), ElementsAre("21 01 0800 0100 1 | 00", focus));
    EXPECT_TRUE(bench_.isEnabled("m_sliderFocus"));

    bench_.click("m_btnAutoExposure");
    EXPECT_THAT(bench_.requests(),
                ElementsAre("21 01 0200 0100 1 | 08", "21 01 0400 0100 4 | a7 00 00 00 !"));
    EXPECT_FALSE(bench_.isEnabled("m_sliderAutoExposure"));
    bench_.click("m_btnAutoExposure");
    EXPECT_THAT(bench_.requests(),
                ElementsAre("21 01 0200 0100 1 | 01", "21 01 0400 0100 4 | a7 00 00 00"));
    EXPECT_TRUE(bench_.isEnabled("m_sliderAutoExposure"));
}

TEST_F(ActionTest, PowerLineButtonsAreRadioButtons) {
    for (const auto& [name, other, byte] :
         {std::tuple{"m_btn50HZ", "m_btn60HZ", "01"}, {"m_btn60HZ", "m_btn50HZ", "02"}}) {
        for (int i = 0; i < 2; ++i) {  // the second time on the one that is on
            bench_.click(name);
            EXPECT_THAT(bench_.requests(), ElementsAre(std::string("21 01 0500 0300 1 | ") + byte));
            EXPECT_EQ(bench_.shown(name), "on");
            EXPECT_EQ(bench_.shown(other), "off");
        }
    }
}

TEST_F(ActionTest, ResetSendsEveryDefaultInOrder) {
    bench_.moveSlider("m_sliderTile", 10);
    bench_.moveSlider("m_sliderPano", 5);
    bench_.requests();
    bench_.buttonSending("OnBtnUvcDefault:").click();
    EXPECT_THAT(bench_.requests(),
                ElementsAre("21 01 0200 0300 2 | 07 00", "21 01 0300 0300 2 | 07 00",
                            "21 01 0600 0300 2 | 07 00", "21 01 0700 0300 2 | 64 00",
                            "21 01 0800 0300 2 | 09 00", "21 01 0900 0300 2 | ee 00",
                            "21 01 0a00 0300 2 | 64 19", "21 01 0100 0300 2 | 00 00",
                            "21 01 0400 0300 2 | 06 00", "a1 81 0400 0300 2 | 06 00",
                            "21 01 0500 0300 1 | 02", "21 01 0b00 0100 2 | 00 00",
                            "21 01 0600 0100 2 | 00 00", "21 01 0400 0100 4 | a7 00 00 00",
                            "21 01 0d00 0100 8 | 00 00 00 00 a0 8c 00 00",
                            "21 01 0d00 0100 8 | 00 00 00 00 00 00 00 00"));
    EXPECT_EQ(bench_.shown("m_textGama"), "238");
    EXPECT_EQ(bench_.shown("m_btn60HZ"), "on");
    EXPECT_EQ(bench_.shown("m_btn50HZ"), "off");
}

TEST_F(ActionTest, ResetWritesWhatIsDisabledToo) {
    bench_.camera().setFaults({.stalled = {{1, CT_ZOOM_ABSOLUTE_CONTROL}}});
    loadPages();
    EXPECT_FALSE(bench_.isEnabled("m_sliderPano"));
    bench_.buttonSending("OnBtnUvcDefault:").click();
    EXPECT_THAT(bench_.writes(), SizeIs(15));
}

TEST_F(ActionTest, ResetLeavesWhatAutomaticModesHold) {
    bench_.moveSlider("m_sliderWB", 4000);
    bench_.moveSlider("m_sliderFocus", 9);
    bench_.moveSlider("m_sliderAutoExposure", -9);
    for (const char* name : {"m_btnAutoWB", "m_btnAutoFocus", "m_btnAutoExposure"})
        bench_.click(name);
    bench_.slider("m_sliderGama").setMaximum(200);
    QCoreApplication::processEvents();
    bench_.requests();
    bench_.buttonSending("OnBtnUvcDefault:").click();
    const auto writes = bench_.writes();
    EXPECT_THAT(writes, SizeIs(12));
    EXPECT_EQ(writes[5], "21 01 0900 0300 2 | c8 00");  // the nearest end of a narrower range
    EXPECT_EQ(bench_.shown("m_sliderWB"), "4000");
    EXPECT_EQ(bench_.shown("m_textFocus"), "9");
    EXPECT_EQ(bench_.shown("m_textExposure"), "-9");
}

struct VendorValue {
    const char* slider;
    const char* list;
    const char* selector;
    int number;
    const char* bytes;
    std::vector<std::string> sliderLog;
    bool logsList;
};

TEST_F(ActionTest, VendorValuesMirrorAndSendTheirByte) {
    for (const VendorValue& row : std::vector<VendorValue>{
             {"m_SliderCompValue", "m_SpinCompValue", "0b", -3, "2 | fd ff", {"slider:-3"}, true},
             {"m_SliderRgain", "m_SpinRgain", "0f", -10, "2 | f6 ff", {}, true},
             {"m_btnBgain", "m_SpinBgain", "0e", 10, "2 | 0a 00", {}, true},
             {"m_SliderDrc", "m_btnDrc", "0c", 8, "2 | 08 00", {}, false},
             {"m_SliderNR2D", "m_btnNR2D", "06", 6, "1 | 06", {}, false},
             {"m_SliderNR3D", "m_btnNR3D", "07", 2, "1 | 02", {}, false}}) {
        const std::string number = std::to_string(row.number);
        const std::string write = std::string("21 01 ") + row.selector + "00 1000 " + row.bytes;
        bench_.moveSlider(row.slider, row.number);
        EXPECT_EQ(bench_.shown(row.list), number);
        EXPECT_THAT(bench_.writes(), ElementsAre(write));
        EXPECT_EQ(bench_.log().take("slider"), row.sliderLog);
        // A number one nearer to zero, so that there is something to choose.
        bench_.choose(row.list, row.number < 0 ? "0" : "1");
        EXPECT_EQ(bench_.shown(row.slider), row.number < 0 ? "0" : "1");
        bench_.choose(row.list, number.c_str());
        EXPECT_EQ(bench_.shown(row.slider), number);
        EXPECT_EQ(bench_.writes().back(), write);
        EXPECT_THAT(bench_.log().take("spin"), SizeIs(row.logsList ? 2 : 0));
    }
}

TEST_F(ActionTest, AGainSliderTakesItsRangeBeforeItsValueIsRead) {
    bench_.moveSlider("m_btnBgain", -4);
    bench_.set({3, PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL}, {1});
    bench_.requests();
    bench_.moveSlider("m_SliderRgain", -5);
    // The range first; the value is the nearest end of it, on the list and on the wire.
    EXPECT_THAT(bench_.requests(),
                ElementsAre("a1 81 0b00 0300 1 | 01", "a1 85 0f00 1000 2 | 02 00",
                            "21 01 0f00 1000 2 | 00 00"));
    EXPECT_EQ(bench_.slider("m_SliderRgain").minimum(), 0);
    EXPECT_EQ(bench_.list("m_SpinRgain").count(), 11);
    EXPECT_EQ(bench_.shown("m_SpinRgain"), "0");
    EXPECT_EQ(bench_.slider("m_btnBgain").minimum(), -10);  // until it is moved
    EXPECT_EQ(bench_.shown("m_btnBgain"), "-4");

    bench_.camera().setFaults({.stalled = {{3, PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL}}});
    bench_.moveSlider("m_SliderRgain", 4);
    EXPECT_EQ(bench_.slider("m_SliderRgain").minimum(), -10);  // no answer: the signed range
    EXPECT_EQ(bench_.shown("m_SpinRgain"), "4");
}

TEST_F(ActionTest, CompensationSwitchIsInvertedAndEnablesItsValue) {
    const bool wasOn = bench_.shown("m_btnCompSwitch") == "on";
    for (const bool on : {!wasOn, wasOn}) {
        bench_.click("m_btnCompSwitch");
        EXPECT_THAT(bench_.writes(),
                    ElementsAre(std::string("21 01 0a00 1000 1 | ") + (on ? "00" : "01")));
        EXPECT_EQ(bench_.isEnabled("m_SliderCompValue"), on);
        EXPECT_EQ(bench_.isEnabled("m_SpinCompValue"), on);
    }
}

TEST_F(ActionTest, FlipsSendTheStateThatTheClickGives) {
    for (const auto& [name, selector] : {std::pair{"m_btnFlipV", "18"}, {"m_btnFlipH", "19"}}) {
        const std::string on = "01";
        for (const char* byte : {"01", "00"}) {
            bench_.click(name);
            EXPECT_THAT(bench_.requests(),
                        ElementsAre(std::string("a1 85 ") + selector + "00 1000 2 | 01 00",
                                    std::string("21 01 ") + selector + "00 1000 1 | " + byte));
            EXPECT_EQ(bench_.image(name), byte == on ? "button_on.png" : "button_off.png");
        }
    }
}

TEST_F(ActionTest, StylesAreRadioButtons) {
    const std::array styles{"m_btnStyleNormal", "m_btnStyleClarity", "m_btnBright",
                            "m_btnStylePC",     "m_btnClarityLed",   "m_btnSytleFace",
                            "m_btnStyleDefault"};
    for (std::size_t i = 0; i < styles.size(); ++i)
        for (int times = 0; times < 2; ++times) {
            bench_.click(styles.at(i));
            EXPECT_THAT(bench_.writes(), ElementsAre("21 01 0d00 1000 1 | 0" + std::to_string(i)));
            for (std::size_t j = 0; j < styles.size(); ++j)
                EXPECT_EQ(bench_.shown(styles.at(j)), i == j ? "on" : "off");
        }
}

TEST_F(ActionTest, StreamSwitchesAskFirst) {
    for (const auto& [name, selector, question] :
         {std::tuple{"m_btnH264Switch", "12", "Notice: Reboot to Switch H264?"},
          {"m_btnAudioSwitch", "1a", "Notice: Reboot to Switch Audio?"}}) {
        const bool wasOn = bench_.shown(name) == "on";
        const std::string image = wasOn ? "button_on.png" : "button_off.png";
        {
            const NextBox box(QMessageBox::RejectRole);
            bench_.click(name);
            EXPECT_EQ(box.said(), question);
        }
        EXPECT_THAT(bench_.requests(), IsEmpty());
        EXPECT_EQ(bench_.shown(name), wasOn ? "off" : "on");  // stays where the click put it
        EXPECT_EQ(bench_.image(name), image);
        const NextBox box(QMessageBox::AcceptRole);
        bench_.click(name);  // back to what the image shows
        EXPECT_THAT(bench_.writes(), ElementsAre(std::string("21 01 ") + selector + "00 1000 1 | " +
                                                 (wasOn ? "01" : "00")));
    }
}

TEST_F(ActionTest, RestoreAsksAndLoadsBothPagesAgain) {
    bench_.moveSlider("m_sliderBright", 12);
    bench_.requests();
    {
        const NextBox box(QMessageBox::RejectRole);
        bench_.buttonSending("OnBtnRestore:").click();
        EXPECT_EQ(box.said(), "Notice: Restore to default settings?");
    }
    EXPECT_THAT(bench_.requests(), IsEmpty());
    const NextBox box(QMessageBox::AcceptRole);
    bench_.buttonSending("OnBtnRestore:").click();
    const auto requests = bench_.requests();
    ASSERT_THAT(requests, SizeIs(2 + 1 + 2 * 13 + 11 + 6));
    EXPECT_EQ(requests[1], "21 01 1700 1000 1 | 01");
    EXPECT_THAT(requests[2], StartsWith("a1 81 0b00 0300"));   // the vendor page
    EXPECT_THAT(requests[29], StartsWith("a1 81 0200 0300"));  // then the standard page
    EXPECT_THAT(requests[40], StartsWith("a1 81 0b00 0100"));
    EXPECT_EQ(bench_.shown("m_textBright"), "7");
    EXPECT_EQ(bench_.shown("m_btnStyleDefault"), "on");
}

TEST(ShowAlertTest, WithoutAWindowTheAnswerIsNo) {
    EXPECT_EQ(ShowAlert("Notice", "Nobody can see this", 1), 0);
}

TEST(NoCameraTest, WidgetsChangeAndNothingIsSent) {
    WindowBench bench;
    bench.log().take();
    for (const auto& [slider, text, number] : {std::tuple{"m_sliderBright", "m_textBright", -9},
                                               {"m_sliderGain", "m_textGain", 9},
                                               {"m_sliderAutoExposure", "m_textExposure", -9},
                                               {"m_sliderTile", "m_textTile", 9}}) {
        bench.moveSlider(slider, number);
        EXPECT_EQ(bench.shown(text), std::to_string(number));
    }
    bench.moveSlider("m_SliderDrc", 5);
    EXPECT_EQ(bench.shown("m_btnDrc"), "5");
    for (const auto& [button, slider] : {std::pair{"m_btnAutoWB", "m_sliderWB"},
                                         {"m_btnAutoFocus", "m_sliderFocus"},
                                         {"m_btnAutoExposure", "m_sliderAutoExposure"}}) {
        bench.click(button);
        EXPECT_EQ(bench.isEnabled(slider), bench.shown(button) == "off") << button;
    }
    bench.click("m_btn50HZ");
    bench.buttonSending("OnBtnUvcDefault:").click();
    EXPECT_EQ(bench.shown("m_textGama"), "238");
    EXPECT_EQ(bench.shown("m_btn60HZ"), "on");
    EXPECT_EQ(bench.shown("m_btn50HZ"), "off");
    const NextBox box(QMessageBox::AcceptRole);
    for (const char* name : {"m_btnFlipH", "m_btnH264Switch", "m_btnStylePC"}) {
        bench.click(name);
        EXPECT_EQ(bench.shown(name), "on");
    }
    bench.buttonSending("OnBtnRestore:").click();
    EXPECT_EQ(bench.shown("m_lableVersion"), "Get device info failed!");
    EXPECT_EQ(bench.shown("m_textGama"), "0");
    EXPECT_EQ(bench.shown("m_btnFlipH"), "off");
    EXPECT_THAT(bench.requests(), IsEmpty());
    EXPECT_THAT(bench.log().take("CameraControl"), IsEmpty());
}

TEST_F(ActionTest, ADragOnASlowCameraSkipsPositionsButNeverTheLast) {
    int waits = 0;
    QSlider& slider = bench_.slider("m_sliderGama");
    slider.setValue(100);
    QCoreApplication::processEvents();
    bench_.requests();
    // While the camera takes its time over the first position, the hand goes on.
    bench_.camera().setFaults({.delay = std::chrono::milliseconds(20)});
    bench_.camera().setWait([&](std::chrono::milliseconds) { ++waits; });
    slider.setSliderDown(true);
    for (int position = 101; position <= 140; ++position)
        slider.setSliderPosition(position);
    QCoreApplication::processEvents();
    for (int position = 141; position <= 180; ++position)
        slider.setSliderPosition(position);
    slider.setSliderDown(false);
    QCoreApplication::processEvents();
    EXPECT_THAT(bench_.writes(),
                ElementsAre("21 01 0900 0300 2 | 8c 00", "21 01 0900 0300 2 | b4 00"));
    EXPECT_EQ(waits, 2);
    EXPECT_EQ(bench_.shown("m_textGama"), "180");
}

}  // namespace
