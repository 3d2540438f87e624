#include <gtest/gtest.h>

#include <QCoreApplication>
#include <set>

#include "tests/kernel/FrameCatcher.h"
#include "tests/kernel/KernelWindow.h"
#include "tests/support/CameraBench.h"
#include "virtualcam/DemoBus.h"

using namespace virtualcam;  // NOLINT(google-build-using-namespace): names of controls throughout

namespace {

class LoadedWindow : public testing::TestWithParam<Exchange>, public KernelWindow {};
class Window : public testing::Test, public KernelWindow {};

}  // namespace

TEST_P(LoadedWindow, ShowsTheCamerasValuesAndItsPicture) {
    const auto plugged = plug(studioCamera(), 0);
    log.take();
    perform(GetParam(), plugged.camera());
    ASSERT_TRUE(waitForPicture());
    const QImage seen = find<QWidget>("m_previewWnd")->grab().toImage();
    std::set<QRgb> colours;
    for (int x = 0; x < seen.width(); ++x)
        colours.insert(seen.pixel(x, seen.height() / 2));
    EXPECT_GT(colours.size(), 16U);
    EXPECT_EQ(log.count("ERROR"), 0);
}
INSTANTIATE_TEST_SUITE_P(Pages, LoadedWindow,
                         testing::ValuesIn(readExchanges({"page-load.txt"}, "kernel")),
                         [](const auto& exchange) { return exchange.param.name; });

TEST_F(Window, ListFollowsThePortsAndACameraWithoutLensSwitchesWidgetsOff) {
    auto classic = plug(classicCamera(), 1);
    const auto studio = plug(studioCamera(), 0);
    EXPECT_EQ(shown("m_cbxDevice"), "Quelvo Classic Camera");
    clickOpen();
    for (const char* name : {"m_sliderZoom", "m_sliderFocus", "m_btnAutoFocus", "m_sliderPano"})
        EXPECT_FALSE(isEnabled(name)) << name;
    EXPECT_TRUE(isEnabled("m_sliderBright"));
    EXPECT_EQ(shown("m_lableVersion"), "v1 SOC:V1.0.5");
    bench.unplug(classic);
    EXPECT_TRUE(waitForList({"Quelvo Studio Camera"}));
    EXPECT_EQ(shown("m_cbxDevice"), "");
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
    plugged.camera().setFaults({.vanishesAfter = 9});
    clickOpen();
    EXPECT_EQ(shown("m_lableVersion"), "Get device info failed!");
    EXPECT_FALSE(isEnabled("m_sliderZoom"));
    EXPECT_GT(log.count("CameraControl Error:"), 0);
    EXPECT_TRUE(waitForList({}));
}

TEST_F(Window, CameraThatAnotherProgramShowsCanStillBeTuned) {
    const auto plugged = plug(studioCamera(), 0);
    setInCamera(plugged.camera(), {kProcessingUnit, virtualcam::PU_BRIGHTNESS_CONTROL}, {3, 0});
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

TEST_F(Window, CameraPulledOutDuringADragIsLoggedAndTheNextOneWorks) {
    auto plugged = plug(studioCamera(), 0);
    clickOpen();
    QSlider& gamma = slider("m_sliderGama");
    gamma.setSliderDown(true);
    const auto drag = [&](int position) {
        gamma.setSliderPosition(position);
        QCoreApplication::processEvents();
    };
    drag(100);
    EXPECT_EQ(wireText(plugged.camera().requests().back()), "21 01 0900 0300 2 | 64 00");
    EXPECT_EQ(log.count("CameraControl Error:"), 0);
    plugged.port.reset();
    drag(101);
    EXPECT_TRUE(waitForList({}));
    drag(102);
    EXPECT_GT(log.count("CameraControl Error:"), 0);
    gamma.setSliderDown(false);
    EXPECT_EQ(shown("m_textGama"), "102");

    const auto next = plug(studioCamera(), 0);
    clickOpen();
    EXPECT_EQ(shown("m_textGama"), "238");
    moveSlider("m_sliderGama", 300);
    EXPECT_EQ(wireText(next.camera().requests().back()), "21 01 0900 0300 2 | 2c 01");
}
