#include <gmock/gmock.h>

#include <set>

#include "tests/kernel/FrameCatcher.h"
#include "tests/kernel/KernelWindow.h"
#include "virtualcam/DemoBus.h"

using namespace virtualcam;  // NOLINT(google-build-using-namespace): names of controls throughout

namespace {

/// A control's value inside the camera, and how a widget shows it.
struct Shown {
    ControlId id;
    std::vector<std::uint8_t> value;
    const char* widget;
    const char* text;
};

/// Every value differs from its default. The modes stand first: they hold what follows.
const std::vector<Shown> kShown{
    {{kCameraTerminal, virtualcam::CT_AE_MODE_CONTROL}, {1}, "m_btnAutoExposure", "off"},
    {{kCameraTerminal, virtualcam::CT_FOCUS_AUTO_CONTROL}, {0}, "m_btnAutoFocus", "off"},
    {{kProcessingUnit, virtualcam::PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL},
     {0},
     "m_btnAutoWB",
     "off"},
    {{kCameraTerminal, virtualcam::CT_EXPOSURE_TIME_ABSOLUTE_CONTROL},
     {80, 0, 0, 0},
     "m_textExposure",
     "-7"},
    {{kCameraTerminal, virtualcam::CT_FOCUS_ABSOLUTE_CONTROL}, {99, 0}, "m_textFocus", "99"},
    {{kCameraTerminal, virtualcam::CT_ZOOM_ABSOLUTE_CONTROL}, {33, 0}, "m_sliderZoom", "33"},
    {{kCameraTerminal, virtualcam::CT_PANTILT_ABSOLUTE_CONTROL},
     {0xA0, 0x8C, 0x00, 0x00, 0xE0, 0xE3, 0xFF, 0xFF},
     "m_sliderPano",
     "10"},
    {{}, {}, "m_sliderTile", "-2"},
    {{kProcessingUnit, virtualcam::PU_BRIGHTNESS_CONTROL}, {3, 0}, "m_sliderBright", "3"},
    {{}, {}, "m_textBright", "3"},
    {{kProcessingUnit, virtualcam::PU_CONTRAST_CONTROL}, {4, 0}, "m_sliderContrast", "4"},
    {{kProcessingUnit, virtualcam::PU_HUE_CONTROL}, {5, 0}, "m_sliderHue", "5"},
    {{kProcessingUnit, virtualcam::PU_SATURATION_CONTROL}, {150, 0}, "m_textSaturation", "150"},
    {{kProcessingUnit, virtualcam::PU_SHARPNESS_CONTROL}, {12, 0}, "m_sliderSharpness", "12"},
    {{kProcessingUnit, virtualcam::PU_GAMMA_CONTROL}, {0x2C, 1}, "m_textGama", "300"},
    {{kProcessingUnit, virtualcam::PU_WHITE_BALANCE_TEMPERATURE_CONTROL},
     {0xA0, 0x0F},
     "m_textWb",
     "4000"},
    {{kProcessingUnit, virtualcam::PU_BACKLIGHT_COMPENSATION_CONTROL},
     {2, 0},
     "m_textBackLight",
     "2"},
    {{kProcessingUnit, virtualcam::PU_GAIN_CONTROL}, {11, 0}, "m_sliderGain", "11"},
    {{kProcessingUnit, virtualcam::PU_POWER_LINE_FREQUENCY_CONTROL}, {1}, "m_btn50HZ", "on"},
    {{}, {}, "m_btn60HZ", "off"},
    {{kVendorUnit, virtualcam::XU_NR2D}, {5}, "m_SliderNR2D", "5"},
    {{kVendorUnit, virtualcam::XU_NR3D}, {2}, "m_btnNR3D", "2"},
    {{kVendorUnit, virtualcam::XU_COMP_SWITCH}, {0}, "m_btnCompSwitch", "on"},
    {{kVendorUnit, virtualcam::XU_COMP_VALUE}, {0xFD, 0xFF}, "m_SpinCompValue", "-3"},
    {{kVendorUnit, virtualcam::XU_DRC}, {6, 0}, "m_btnDrc", "6"},
    {{kVendorUnit, virtualcam::XU_STYLE}, {3}, "m_btnStylePC", "on"},
    {{kVendorUnit, virtualcam::XU_BGAIN}, {0xFC, 0xFF}, "m_btnBgain", "-4"},
    {{kVendorUnit, virtualcam::XU_RGAIN}, {7, 0}, "m_SpinRgain", "7"},
    {{kVendorUnit, virtualcam::XU_H264_SWITCH}, {0}, "m_btnH264Switch", "off"},
    {{kVendorUnit, virtualcam::XU_FLIP_V}, {1}, "m_btnFlipV", "on"},
    {{kVendorUnit, virtualcam::XU_FLIP_H}, {1}, "m_btnFlipH", "on"},
    {{kVendorUnit, virtualcam::XU_AUDIO_SWITCH}, {1}, "m_btnAudioSwitch", "on"},
    {{}, {}, "m_lableVersion", "v3 V9.2.4"},
};

class Window : public testing::Test, public KernelWindow {};

}  // namespace

TEST_F(Window, OpenedCameraFillsBothPagesAndIsShown) {
    const auto plugged = plug(studioCamera(), 0);
    for (const Shown& row : kShown)
        if (!row.value.empty())
            setInside(plugged.camera(), row.id, row.value);
    clickOpen();
    for (const Shown& row : kShown)
        EXPECT_EQ(shown(row.widget), row.text) << row.widget;
    EXPECT_EQ(log.count("CameraControl Error:"), 0);

    ASSERT_TRUE(waitForPicture());
    const QImage seen = find<QWidget>("m_previewWnd")->grab().toImage();
    std::set<QRgb> colours;
    for (int x = 0; x < seen.width(); ++x)
        colours.insert(seen.pixel(x, seen.height() / 2));
    EXPECT_GT(colours.size(), 16U);
    EXPECT_EQ(log.count(kOpenError), 0);
}

TEST_F(Window, ListFollowsThePorts) {
    EXPECT_TRUE(listed().empty());
    auto classic = plug(classicCamera(), 1);
    EXPECT_EQ(shown("m_cbxDevice"), "Quelvo Classic Camera");
    auto studio = plug(studioCamera(), 0);
    EXPECT_EQ(shown("m_cbxDevice"), "Quelvo Classic Camera");
    bench.unplug(classic);
    EXPECT_TRUE(waitForList({"Quelvo Studio Camera"}));
    EXPECT_EQ(shown("m_cbxDevice"), "");
}

TEST_F(Window, CameraWithoutLensSwitchesItsWidgetsOff) {
    const auto plugged = plug(classicCamera(), 0);
    clickOpen();
    for (const char* name : {"m_sliderZoom", "m_sliderFocus", "m_btnAutoFocus", "m_sliderPano"})
        EXPECT_FALSE(isEnabled(name)) << name;
    EXPECT_TRUE(isEnabled("m_sliderBright"));
    EXPECT_EQ(shown("m_lableVersion"), "v1 SOC:V1.0.5");
}

TEST_F(Window, CameraPulledOutWhilePreviewingIsToldOnce) {
    auto plugged = plug(studioCamera(), 0);
    clickOpen();
    ASSERT_TRUE(waitForPicture());
    bench.unplug(plugged);
    EXPECT_TRUE(waitForList({}));
    EXPECT_TRUE(waitUntil([&] { return log.count(kOpenError) > 0; }));
    clickOpen();
    EXPECT_EQ(log.count(kOpenError), 1);
}

TEST_F(Window, CameraPulledOutWhileItsPagesLoadEndsTheLoad) {
    auto plugged = plug(studioCamera(), 0);
    Faults faults;
    faults.vanishesAfter = 9;
    plugged.camera().setFaults(faults);
    clickOpen();
    EXPECT_EQ(shown("m_lableVersion"), "Get device info failed!");
    EXPECT_FALSE(isEnabled("m_sliderZoom"));
    EXPECT_GT(log.count("CameraControl Error:"), 0);
    EXPECT_TRUE(waitForList({}));
}

TEST_F(Window, CameraThatAnotherProgramShowsCanStillBeTuned) {
    const auto plugged = plug(studioCamera(), 0);
    setInside(plugged.camera(), {kProcessingUnit, virtualcam::PU_BRIGHTNESS_CONTROL}, {3, 0});
    std::string error;
    FrameCatcher other;
    const auto source = plugged.device->open(error);
    ASSERT_TRUE(source) << error;
    source->start({320, 240}, other);
    ASSERT_TRUE(waitUntil([&] { return other.state().frames > 0; }));
    clickOpen();
    EXPECT_TRUE(waitUntil([&] { return log.count(kOpenError) > 0; }));
    EXPECT_EQ(log.count(kOpenError), 1);
    EXPECT_EQ(shown("m_sliderBright"), "3");
    const int before = other.state().frames;
    EXPECT_TRUE(waitUntil([&] { return other.state().frames > before; }));
}
