// Both pages filled from the camera: what is asked, in which order, and what the widgets show.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QLabel>
#include <algorithm>
#include <array>
#include <iterator>

#include "pages/vendor/VendorPage.h"
#include "pages/vendor/VersionLabel.h"
#include "tests/support/WindowBench.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using virtualcam::ControlId;

constexpr ControlId pu(std::uint8_t selector) {
    return {3, selector};
}
constexpr ControlId ct(std::uint8_t selector) {
    return {1, selector};
}
constexpr ControlId xu(std::uint8_t selector) {
    return {16, selector};
}

std::vector<std::uint8_t> bytes16(int value) {
    return {static_cast<std::uint8_t>(value & 0xFF),
            static_cast<std::uint8_t>((value >> 8) & 0xFF)};
}

std::vector<std::uint8_t> bytes32(std::int64_t value, int count = 4) {
    std::vector<std::uint8_t> bytes;
    for (int i = 0; i < count; ++i)
        bytes.push_back(static_cast<std::uint8_t>((value >> (8 * i)) & 0xFF));
    return bytes;
}

/// A camera whose every control takes any value of its size, as far as the page load cares.
virtualcam::CameraModel permissive() {
    virtualcam::CameraModel model = virtualcam::studioCamera();
    for (auto& row : model.controls) {
        const int bits = 8 * row.length / (row.secondLimits ? 2 : 1);
        if (row.kind == virtualcam::ControlKind::text ||
            row.kind == virtualcam::ControlKind::trigger)
            continue;
        row.kind = virtualcam::ControlKind::number;
        const auto widest = static_cast<std::int32_t>((std::int64_t{1} << (bits - 1)) - 1);
        row.limits = {-widest - 1, widest, 1, row.limits.standard};
        if (row.secondLimits)
            row.secondLimits = row.limits;
        row.automatic.reset();
    }
    return model;
}

class PageLoadTest : public testing::Test {
  protected:
    PageLoadTest() { bench_.open(); }

    void loadStandardPage() {
        bench_.controller().ReadConfig_UVC();
        bench_.controller().InitUVCPage();
    }

    void loadVendorPage() { InitXUPage(bench_.controller()); }

    /// Gives one control a value and loads its page.
    void loadWith(ControlId control, const std::vector<std::uint8_t>& value) {
        EXPECT_THAT(bench_.writes(), IsEmpty());  // showing a value never sends one
        bench_.set(control, value);
        control.unit == 16 ? loadVendorPage() : loadStandardPage();
    }

    WindowBench bench_{permissive()};
};

TEST_F(PageLoadTest, StandardPageReadsEachControlOnceInOrder) {
    loadStandardPage();
    std::vector<std::string> asked;
    for (const std::string& request : bench_.requests())
        asked.push_back(request.substr(0, request.find(" |")));
    EXPECT_THAT(asked, ElementsAre("a1 81 0200 0300 2", "a1 81 0300 0300 2", "a1 81 0600 0300 2",
                                   "a1 81 0700 0300 2", "a1 81 0800 0300 2", "a1 81 0900 0300 2",
                                   "a1 81 0a00 0300 2", "a1 81 0b00 0300 1", "a1 81 0100 0300 2",
                                   "a1 81 0400 0300 2", "a1 81 0500 0300 1",  //
                                   "a1 81 0b00 0100 2", "a1 81 0600 0100 2", "a1 81 0800 0100 1",
                                   "a1 81 0200 0100 1", "a1 81 0400 0100 4", "a1 81 0d00 0100 8"));
    EXPECT_THAT(bench_.log().take("zoom"), ElementsAre("zoomEnable:0"));
}

TEST_F(PageLoadTest, StandardPageShowsEachControlOnItsOwnWidgets) {
    struct Shown {
        ControlId control;
        const char* slider;
        const char* text;
    };
    int value = 1;
    for (const Shown& row : {Shown{pu(2), "m_sliderBright", "m_textBright"},
                             {pu(3), "m_sliderContrast", "m_textContrast"},
                             {pu(6), "m_sliderHue", "m_textHue"},
                             {pu(7), "m_sliderSaturation", "m_textSaturation"},
                             {pu(8), "m_sliderSharpness", "m_textSharpness"},
                             {pu(9), "m_sliderGama", "m_textGama"},
                             {pu(10), "m_sliderWB", "m_textWb"},
                             {pu(1), "m_sliderBackLight", "m_textBackLight"},
                             {pu(4), "m_sliderGain", "m_textGain"},
                             {ct(11), "m_sliderZoom", "m_textZoom"},
                             {ct(6), "m_sliderFocus", "m_textFocus"}}) {
        const int given = row.control == pu(10) ? 2100 : ++value % 11;
        loadWith(row.control, bytes16(given));
        EXPECT_EQ(bench_.shown(row.slider), std::to_string(given)) << row.slider;
        EXPECT_EQ(bench_.shown(row.text), std::to_string(given)) << row.text;
        // A slider keeps to its range; the text shows the number as the camera gave it.
        loadWith(row.control, bytes16(-10));
        EXPECT_EQ(bench_.shown(row.text), "65526") << row.text;
        EXPECT_EQ(bench_.slider(row.slider).value(), bench_.slider(row.slider).maximum());
    }
}

TEST_F(PageLoadTest, AutomaticModesDecideWhatIsEnabled) {
    for (const int byte : {0, 1, 2, 255}) {
        loadWith(pu(11), {static_cast<std::uint8_t>(byte)});
        EXPECT_EQ(bench_.shown("m_btnAutoWB"), byte == 0 ? "off" : "on");
        EXPECT_EQ(bench_.isEnabled("m_sliderWB"), byte != 1);
        loadWith(ct(8), {static_cast<std::uint8_t>(byte)});
        EXPECT_EQ(bench_.shown("m_btnAutoFocus"), byte == 0 ? "off" : "on");
        EXPECT_EQ(bench_.isEnabled("m_sliderFocus"), byte == 0);
    }
    for (const int mode : {1, 2, 4, 8}) {
        loadWith(ct(2), {static_cast<std::uint8_t>(mode)});
        EXPECT_EQ(bench_.shown("m_btnAutoExposure"), mode == 8 ? "on" : "off");
        EXPECT_EQ(bench_.isEnabled("m_sliderAutoExposure"), mode != 8);
    }
    for (const int frequency : {0, 1, 2, 3}) {
        loadWith(pu(5), {static_cast<std::uint8_t>(frequency)});
        EXPECT_EQ(bench_.shown("m_btn50HZ"), frequency == 1 ? "on" : "off");
        EXPECT_EQ(bench_.shown("m_btn60HZ"), frequency == 1 ? "off" : "on");
    }
}

TEST_F(PageLoadTest, ExposureShowsTheIndexOfItsTime) {
    const std::array times{1, 2, 5, 10, 20, 40, 80, 167, 333};
    for (int i = 0; i < 9; ++i) {
        loadWith(ct(4), bytes32(times.at(static_cast<std::size_t>(i))));
        EXPECT_EQ(bench_.shown("m_sliderAutoExposure"), std::to_string(i - 13));
        EXPECT_EQ(bench_.shown("m_textExposure"), std::to_string(i - 13));
    }
    for (const auto& [time, index] : {std::pair{100, "-5"}, {-9, "-9"}, {-200, "-13"}}) {
        loadWith(ct(4), bytes32(time));
        EXPECT_EQ(bench_.shown("m_sliderAutoExposure"), index);
        EXPECT_EQ(bench_.shown("m_textExposure"), std::to_string(time));
    }
}

TEST_F(PageLoadTest, PanAndTiltShowWholeDegreesTowardZero) {
    for (const auto& [pan, tilt, panShown, tiltShown] :
         {std::tuple{-7200, 5400, "-2", "1"}, {3599, -3601, "0", "-1"}, {-5400, 0, "-1", "0"}}) {
        std::vector<std::uint8_t> value = bytes32(pan);
        std::ranges::copy(bytes32(tilt), std::back_inserter(value));
        loadWith(ct(13), value);
        EXPECT_EQ(bench_.shown("m_sliderPano"), panShown);
        EXPECT_EQ(bench_.shown("m_textPano"), panShown);
        EXPECT_EQ(bench_.shown("m_sliderTile"), tiltShown);
        EXPECT_EQ(bench_.shown("m_textTile"), tiltShown);
    }
}

TEST_F(PageLoadTest, WithoutZoomThereIsNoPanAndTilt) {
    loadWith(ct(11), bytes16(7));
    bench_.requests();
    bench_.camera().setFaults({.stalled = {ct(11), ct(6)}});
    bench_.log().take();
    loadStandardPage();
    EXPECT_EQ(bench_.shown("m_textZoom"), "7");  // left as it was
    EXPECT_EQ(bench_.shown("m_btnAutoFocus"), "off");
    for (const char* name :
         {"m_sliderZoom", "m_sliderPano", "m_sliderTile", "m_sliderFocus", "m_btnAutoFocus"})
        EXPECT_FALSE(bench_.isEnabled(name)) << name;
    EXPECT_THAT(bench_.log().take("zoom"), ElementsAre("zoomEnable:1"));
    const auto requests = bench_.requests();
    EXPECT_EQ(requests.size(), 15U);  // neither the focus mode nor pan and tilt
    EXPECT_EQ(requests.back().substr(0, 17), "a1 81 0400 0100 4");

    bench_.camera().setFaults({});
    loadStandardPage();
    for (const char* name : {"m_sliderZoom", "m_sliderPano", "m_sliderTile", "m_btnAutoFocus"})
        EXPECT_TRUE(bench_.isEnabled(name)) << name;
}

TEST_F(PageLoadTest, AControlThatDoesNotAnswerShowsTheOneBefore) {
    bench_.set(pu(7), bytes16(0x0142));
    bench_.set(pu(10), bytes16(0x1901));
    bench_.set(pu(4), bytes16(0x0001));
    bench_.camera().setFaults({.stalled = {pu(2), pu(8), pu(11), pu(5), ct(4)}});
    loadStandardPage();
    EXPECT_EQ(bench_.shown("m_textBright"), "0");  // nothing was before it
    EXPECT_EQ(bench_.shown("m_textSharpness"), std::to_string(0x0142));
    EXPECT_EQ(bench_.shown("m_btnAutoWB"), "on");  // the temperature's low byte
    EXPECT_FALSE(bench_.isEnabled("m_sliderWB"));
    EXPECT_EQ(bench_.shown("m_btn50HZ"), "on");      // the gain's low byte
    EXPECT_EQ(bench_.shown("m_textExposure"), "8");  // the exposure mode
}

TEST_F(PageLoadTest, VendorPageReadsEachControlOnceInOrder) {
    loadVendorPage();
    const auto requests = bench_.requests();
    std::vector<std::string> selectors;  // request code, selector and unit
    for (const std::string& request : requests)
        selectors.push_back(request.substr(3, 2) + " " + request.substr(6, 2) + " of " +
                            request.substr(11, 2));
    std::vector<std::string> expected{"81 0b of 03"};
    for (const char* selector :
         {"09", "0d", "06", "07", "0c", "0f", "0e", "0b", "0a", "12", "1a", "19", "18"}) {
        expected.push_back(std::string("85 ") + selector + " of 10");
        expected.push_back(std::string("81 ") + selector + " of 10");
    }
    EXPECT_THAT(selectors, ElementsAreArray(expected));
}

TEST_F(PageLoadTest, VendorPageShowsSignedBytesOnSliderAndList) {
    struct Shown {
        std::uint8_t selector;
        const char* slider;
        const char* list;
        int lowest;
        int highest;
    };
    bench_.set(pu(11), {0});
    for (const Shown& row : {Shown{11, "m_SliderCompValue", "m_SpinCompValue", -7, 7},
                             {15, "m_SliderRgain", "m_SpinRgain", -10, 10},
                             {14, "m_btnBgain", "m_SpinBgain", -10, 10},
                             {12, "m_SliderDrc", "m_btnDrc", 0, 8},
                             {6, "m_SliderNR2D", "m_btnNR2D", 0, 6},
                             {7, "m_SliderNR3D", "m_btnNR3D", 0, 8}}) {
        for (const int value : {row.lowest, -1, 3, row.highest, 100, -100}) {
            const int held = std::clamp(value, row.lowest, row.highest);
            const int length =
                static_cast<int>(std::ranges::find(bench_.camera().model().controls,
                                                   xu(row.selector), &virtualcam::ControlRow::id)
                                     ->length);
            loadWith(xu(row.selector), bytes32(value, length));
            EXPECT_EQ(bench_.shown(row.slider), std::to_string(held)) << row.slider;
            EXPECT_EQ(bench_.shown(row.list), std::to_string(held)) << row.list;
        }
    }
}

TEST_F(PageLoadTest, GainRangesFollowAutomaticWhiteBalance) {
    bench_.set(xu(15), bytes16(-5));
    for (const int byte : {0, 1, 2}) {
        bench_.set(pu(11), {static_cast<std::uint8_t>(byte)});
        loadVendorPage();
        const int minimum = byte == 1 ? 0 : -10;
        for (const auto& [slider, list] :
             {std::pair{"m_SliderRgain", "m_SpinRgain"}, {"m_btnBgain", "m_SpinBgain"}}) {
            EXPECT_EQ(bench_.slider(slider).minimum(), minimum);
            EXPECT_EQ(bench_.slider(slider).maximum(), 10);
            EXPECT_EQ(bench_.slider(slider).tickInterval(), 1);
            EXPECT_EQ(bench_.list(list).count(), 11 - minimum);
        }
        EXPECT_EQ(bench_.shown("m_SpinRgain"), byte == 1 ? "0" : "-5");
    }
}

TEST_F(PageLoadTest, SwitchesAndStylesShowTheirBytes) {
    for (const auto& [selector, name, onAt0] : {std::tuple{10, "m_btnCompSwitch", true},
                                                {18, "m_btnH264Switch", false},
                                                {26, "m_btnAudioSwitch", false},
                                                {24, "m_btnFlipV", false},
                                                {25, "m_btnFlipH", false}}) {
        for (const int byte : {0, 1, 2, 255}) {
            loadWith(xu(static_cast<std::uint8_t>(selector)), {static_cast<std::uint8_t>(byte)});
            const std::string state = (byte == 0) == onAt0 ? "on" : "off";
            EXPECT_EQ(bench_.shown(name), state) << name << byte;
            EXPECT_EQ(bench_.image(name), "button_" + state + ".png") << name << byte;
            if (selector == 10) {
                EXPECT_EQ(bench_.isEnabled("m_SliderCompValue"), byte == 0);
                EXPECT_EQ(bench_.isEnabled("m_SpinCompValue"), byte == 0);
            }
        }
    }
    const std::array styles{"m_btnStyleNormal", "m_btnStyleClarity", "m_btnBright",
                            "m_btnStylePC",     "m_btnClarityLed",   "m_btnSytleFace",
                            "m_btnStyleDefault"};
    for (const int byte : {3, 0, 6, 7, 1, 255, 2, 128, 4, 5}) {
        loadWith(xu(13), {static_cast<std::uint8_t>(byte)});
        for (int i = 0; i < 7; ++i)
            EXPECT_EQ(bench_.shown(styles.at(static_cast<std::size_t>(i))),
                      i == byte ? "on" : "off");
    }
}

TEST_F(PageLoadTest, AFailedVendorReadShowsZero) {
    loadWith(xu(12), bytes16(5));
    loadWith(xu(25), {1});
    bench_.camera().setFaults({.stalled = {xu(12), xu(25), xu(9)}});
    loadVendorPage();
    EXPECT_EQ(bench_.shown("m_SliderDrc"), "0");
    EXPECT_EQ(bench_.shown("m_btnFlipH"), "off");
    EXPECT_EQ(bench_.shown("m_lableVersion"), "Get device info failed!");
    bench_.camera().setFaults({.lengths = {{xu(9), 25}}});
    loadVendorPage();
    EXPECT_EQ(bench_.shown("m_lableVersion"), "Get device info failed!");
}

TEST(VersionLabelTest, NamesTheHardwareByItsFirmware) {
    for (const auto& [version, label] : {std::pair{"V9.2.4", "v3 V9.2.4"},
                                         {"V8.1.2", "v2 V8.1.2"},
                                         {"V8.V9.", "v3 V8.V9."},
                                         {"1.0.5", "v1 SOC:V1.0.5"},
                                         {"SOC1.0.5", "SOC1.0.5"},
                                         {"2.0.0", "2.0.0"},
                                         {"v9.1.", "v1 SOC:Vv9.1."},
                                         {"", ""},
                                         {"V9.\xFF\xC3", "v3 V9.\uFFFD\uFFFD"}})
        EXPECT_EQ(versionLabel(0, version), label);
    EXPECT_EQ(versionLabel(1, "V9.2.4"), "Get device info failed!");
}

TEST(VersionTextTest, AFullBufferIsAllText) {
    virtualcam::CameraModel model = virtualcam::studioCamera();
    model.version = "<b>3.456789012345678901</b>";
    model.version.resize(24);
    WindowBench bench(model);
    bench.open();
    InitXUPage(bench.controller());
    EXPECT_EQ(bench.shown("m_lableVersion"), model.version);
    EXPECT_EQ(bench.find<QLabel>("m_lableVersion")->textFormat(), Qt::PlainText);
}

}  // namespace
