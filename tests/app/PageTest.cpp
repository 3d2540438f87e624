// Both pages in the real window: the scripted exchanges, and the version, which no script can set.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QLabel>

#include "camera/ControlTable.h"
#include "pages/vendor/VendorPage.h"
#include "tests/support/Exchanges.h"
#include "tests/support/WindowFixture.h"

namespace {

void loadPages(WindowFixture& fixture) {
    InitXUPage(fixture.controller());
    fixture.controller().ReadConfig_UVC();
    fixture.controller().InitUVCPage();
}

/// A camera whose every control takes any value of its size.
virtualcam::CameraModel tolerantCamera() {
    virtualcam::CameraModel model = virtualcam::studioCamera();
    for (auto& row : model.controls) {
        if (row.kind == virtualcam::ControlKind::text)
            continue;
        row.kind = virtualcam::ControlKind::number;
        row.limits = {INT32_MIN, INT32_MAX, 1, row.limits.standard};
        if (row.secondLimits)
            row.secondLimits = row.limits;
        row.automatic.reset();
    }
    return model;
}

class ExchangeTest : public testing::TestWithParam<Exchange> {};

TEST_P(ExchangeTest, Goes) {
    const auto isIn = [](const char* script) { return GetParam().file.ends_with(script); };
    WindowFixture fixture(isIn("page-load.txt") ? tolerantCamera() : virtualcam::studioCamera());
    if (!isIn("no-camera.txt"))
        fixture.open();
    if (isIn("standard-page.txt") || isIn("vendor-page.txt")) {
        setInCamera(fixture.camera(), {3, PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL}, {0});
        setInCamera(fixture.camera(), {1, CT_FOCUS_AUTO_CONTROL}, {0});
        setInCamera(fixture.camera(), {1, CT_AE_MODE_CONTROL}, {1});
        loadPages(fixture);
    }
    fixture.requests();
    fixture.log().take();
    perform(GetParam(), {fixture, fixture.camera(), fixture.log(), [&] { loadPages(fixture); },
                         [](const auto&) { return false; }});
}
INSTANTIATE_TEST_SUITE_P(Pages, ExchangeTest,
                         testing::ValuesIn(readExchanges({"standard-page.txt", "vendor-page.txt",
                                                          "page-load.txt", "no-camera.txt",
                                                          "channel.txt"},
                                                         "direct")),
                         [](const auto& exchange) { return exchange.param.name; });

TEST(VersionLabelTest, NamesTheHardwareByItsFirmwareInPlainText) {
    for (const auto& [version, label] : {std::pair{"V9.2.4", "v3 V9.2.4"},
                                         {"", ""},
                                         {"V8.1.2", "v2 V8.1.2"},
                                         {"V8.V9.", "v3 V8.V9."},
                                         {"1.0.5", "v1 SOC:V1.0.5"},
                                         {"SOC1.0.5", "SOC1.0.5"},
                                         {"v9.2.", "v9.2."},
                                         {"V9.\xFF\xC3", "v3 V9.\uFFFD\uFFFD"},
                                         {"<b>3.45678901234567</b>!",  // as long as its buffer
                                          "<b>3.45678901234567</b>!"}}) {
        virtualcam::CameraModel model = virtualcam::studioCamera();
        model.version = version;
        WindowFixture fixture(model);
        fixture.open();
        InitXUPage(fixture.controller());
        EXPECT_EQ(fixture.shown("m_lableVersion"), label);
        EXPECT_EQ(fixture.find<QLabel>("m_lableVersion")->textFormat(), Qt::PlainText);
    }
}

}  // namespace
