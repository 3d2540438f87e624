// Every action of both pages, worked through its widget: what arrives at the camera on the wire.

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <algorithm>

#include "tests/kernel/KernelWindow.h"
#include "tests/support/CameraBench.h"
#include "virtualcam/DemoBus.h"

using namespace virtualcam;  // NOLINT(google-build-using-namespace): names of controls throughout

namespace {

using testing::ElementsAre;
using testing::SizeIs;

using Wire = std::vector<std::string>;

constexpr const char* kRequestFailed = "CameraControl Error: Control request failed: ";

/// Whether the driver makes the request of itself, at times of its own: it reads the limits of a
/// standard control before it first writes it, the values that a mode governs after it has written
/// the mode, and from unit 0 why a request was refused. (For the vendor unit it asks length and
/// capabilities of a control at its first use, which the loading of the pages mostly is.)
bool isDriversOwn(const RequestRecord& record) {
    const auto unit = static_cast<std::uint8_t>(record.wIndex >> 8);
    const auto& rows = studioControls();
    const auto row = std::find_if(rows.begin(), rows.end(), [&](const ControlRow& candidate) {
        return candidate.id == ControlId{unit, static_cast<std::uint8_t>(record.wValue >> 8)};
    });
    if (unit == kInterfaceUnit || row == rows.end())
        return true;
    const bool movesByItself = (row->info & kInfoAutoUpdate) != 0;
    return unit != kVendorUnit && record.bRequest != SET_CUR &&
           (record.bRequest != GET_CUR || movesByItself);
}

/// A window with a camera open, which all tests share: plugging one in takes long. Each test
/// leaves the automatic modes off.
class Actions : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        shared_ = std::make_unique<Shared>();
        shared_->plugged = shared_->window.plug(studioCamera(), 0);
        endAutomaticModes();
        window().clickOpen();
        camera().clearRequests();
    }
    static void TearDownTestSuite() { shared_.reset(); }

    static KernelWindow& window() { return shared_->window; }
    static VirtualCamera& camera() { return shared_->plugged.camera(); }

    /// Past the driver, which takes them for off from then on.
    static void endAutomaticModes() {
        setInside(camera(), {kCameraTerminal, virtualcam::CT_FOCUS_AUTO_CONTROL}, {0});
        setInside(camera(), {kCameraTerminal, virtualcam::CT_AE_MODE_CONTROL}, {1});
        setInside(camera(),
                  {kProcessingUnit, virtualcam::PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL}, {0});
    }

    /// The requests since the last call that are not the driver's own.
    static Wire arrived() {
        Wire texts;
        for (const RequestRecord& record : camera().requests())
            if (!isDriversOwn(record))
                texts.push_back(wireText(record));
        camera().clearRequests();
        return texts;
    }

    /// Gives a widget the number or title `to`, or clicks it.
    static void work(const char* name, const char* to) {
        auto* widget = window().find<QWidget>(name);
        if (qobject_cast<QSlider*>(widget) != nullptr)
            window().moveSlider(name, QString(to).toInt());
        else if (qobject_cast<QComboBox*>(widget) != nullptr)
            window().choose(name, to);
        else
            window().click(name);
    }

  private:
    struct Shared {
        KernelWindow window;
        PluggedCamera plugged;
    };
    static inline std::unique_ptr<Shared> shared_;
};

struct Action {
    const char* widget;
    const char* to;  ///< the slider's number or the list's title; a button is clicked
    Wire wire;
};

const std::vector<Action> kActions{
    {"m_sliderBright", "-10", {"21 01 0200 0300 2 | f6 ff"}},
    {"m_sliderContrast", "3", {"21 01 0300 0300 2 | 03 00"}},
    // The bytes fb ff are more than any contrast, as it has no sign: the driver sends the highest.
    {"m_sliderContrast", "-5", {"21 01 0300 0300 2 | ff 00"}},
    {"m_sliderHue", "-7", {"21 01 0600 0300 2 | f9 ff"}},
    {"m_sliderSaturation", "150", {"21 01 0700 0300 2 | 96 00"}},
    {"m_sliderSharpness", "2", {"21 01 0800 0300 2 | 02 00"}},
    {"m_sliderGama", "300", {"21 01 0900 0300 2 | 2c 01"}},
    {"m_sliderWB", "5000", {"21 01 0a00 0300 2 | 88 13"}},
    {"m_sliderBackLight", "2", {"21 01 0100 0300 2 | 02 00"}},
    // The driver itself answers when the gain is read back: it knows what it has written.
    {"m_sliderGain", "9", {"21 01 0400 0300 2 | 09 00"}},
    {"m_sliderZoom", "50", {"21 01 0b00 0100 2 | 32 00"}},
    {"m_sliderFocus", "77", {"21 01 0600 0100 2 | 4d 00"}},
    {"m_sliderAutoExposure", "-5", {"21 01 0400 0100 4 | 4d 01 00 00"}},
    {"m_sliderPano", "-2", {"21 01 0d00 0100 8 | e0 e3 ff ff 00 00 00 00"}},
    {"m_sliderTile", "10", {"21 01 0d00 0100 8 | e0 e3 ff ff a0 8c 00 00"}},
    {"m_btnAutoWB", "", {"21 01 0b00 0300 1 | 01"}},
    {"m_btnAutoWB", "", {"21 01 0b00 0300 1 | 00", "21 01 0a00 0300 2 | 88 13"}},
    // The driver itself refuses the manual value, too, while an automatic mode holds it.
    {"m_btnAutoFocus", "", {"21 01 0800 0100 1 | 01"}},
    {"m_btnAutoFocus", "", {"21 01 0800 0100 1 | 00", "21 01 0600 0100 2 | 4d 00"}},
    {"m_btnAutoExposure", "", {"21 01 0200 0100 1 | 08"}},
    {"m_btnAutoExposure", "", {"21 01 0200 0100 1 | 01", "21 01 0400 0100 4 | 4d 01 00 00"}},
    {"m_btn50HZ", "", {"21 01 0500 0300 1 | 01"}},
    {"m_btn60HZ", "", {"21 01 0500 0300 1 | 02"}},
    {"m_btnCompSwitch", "", {"a1 85 0a00 1000 2 | 01 00", "21 01 0a00 1000 1 | 00"}},
    {"m_SliderCompValue", "-3", {"a1 85 0b00 1000 2 | 02 00", "21 01 0b00 1000 2 | fd ff"}},
    {"m_SpinCompValue", "7", {"a1 85 0b00 1000 2 | 02 00", "21 01 0b00 1000 2 | 07 00"}},
    {"m_SliderRgain", "-10", {"a1 85 0f00 1000 2 | 02 00", "21 01 0f00 1000 2 | f6 ff"}},
    {"m_SpinRgain", "10", {"a1 85 0f00 1000 2 | 02 00", "21 01 0f00 1000 2 | 0a 00"}},
    {"m_btnBgain", "5", {"a1 85 0e00 1000 2 | 02 00", "21 01 0e00 1000 2 | 05 00"}},
    {"m_SpinBgain", "-1", {"a1 85 0e00 1000 2 | 02 00", "21 01 0e00 1000 2 | ff ff"}},
    {"m_SliderDrc", "8", {"a1 85 0c00 1000 2 | 02 00", "21 01 0c00 1000 2 | 08 00"}},
    {"m_btnDrc", "1", {"a1 85 0c00 1000 2 | 02 00", "21 01 0c00 1000 2 | 01 00"}},
    {"m_SliderNR2D", "6", {"a1 85 0600 1000 2 | 01 00", "21 01 0600 1000 1 | 06"}},
    {"m_btnNR2D", "0", {"a1 85 0600 1000 2 | 01 00", "21 01 0600 1000 1 | 00"}},
    {"m_SliderNR3D", "2", {"a1 85 0700 1000 2 | 01 00", "21 01 0700 1000 1 | 02"}},
    {"m_btnNR3D", "8", {"a1 85 0700 1000 2 | 01 00", "21 01 0700 1000 1 | 08"}},
    {"m_btnStyleNormal", "", {"a1 85 0d00 1000 2 | 01 00", "21 01 0d00 1000 1 | 00"}},
    {"m_btnStyleClarity", "", {"a1 85 0d00 1000 2 | 01 00", "21 01 0d00 1000 1 | 01"}},
    {"m_btnBright", "", {"a1 85 0d00 1000 2 | 01 00", "21 01 0d00 1000 1 | 02"}},
    {"m_btnStylePC", "", {"a1 85 0d00 1000 2 | 01 00", "21 01 0d00 1000 1 | 03"}},
    {"m_btnClarityLed", "", {"a1 85 0d00 1000 2 | 01 00", "21 01 0d00 1000 1 | 04"}},
    {"m_btnSytleFace", "", {"a1 85 0d00 1000 2 | 01 00", "21 01 0d00 1000 1 | 05"}},
    {"m_btnStyleDefault", "", {"a1 85 0d00 1000 2 | 01 00", "21 01 0d00 1000 1 | 06"}},
    {"m_btnH264Switch", "", {"a1 85 1200 1000 2 | 01 00", "21 01 1200 1000 1 | 00"}},
    {"m_btnAudioSwitch", "", {"a1 85 1a00 1000 2 | 01 00", "21 01 1a00 1000 1 | 01"}},
    {"m_btnFlipV", "", {"a1 85 1800 1000 2 | 01 00", "21 01 1800 1000 1 | 01"}},
    {"m_btnFlipH", "", {"a1 85 1900 1000 2 | 01 00", "21 01 1900 1000 1 | 01"}},
};

}  // namespace

TEST_F(Actions, EachArrivesWithItsExactBytesInOrder) {
    const NextBox box(QMessageBox::AcceptRole);  // for the stream switches
    for (const Action& action : kActions) {
        work(action.widget, action.to);
        EXPECT_EQ(arrived(), action.wire) << action.widget << ' ' << action.to;
    }
    // EACCES: focus and exposure time, of which the driver knows that a mode holds them.
    EXPECT_EQ(window().log.count(kRequestFailed), 2);
    EXPECT_EQ(window().log.count(std::string(kRequestFailed) + "0000000d"), 2);
}

TEST_F(Actions, ResetSendsEveryDefaultInOrder) {
    window().moveSlider("m_sliderTile", 10);
    window().moveSlider("m_sliderPano", 5);
    camera().clearRequests();
    window().buttonSending("OnBtnUvcDefault:").click();
    EXPECT_THAT(arrived(), ElementsAre("21 01 0200 0300 2 | 07 00", "21 01 0300 0300 2 | 07 00",
                                       "21 01 0600 0300 2 | 07 00", "21 01 0700 0300 2 | 64 00",
                                       "21 01 0800 0300 2 | 09 00", "21 01 0900 0300 2 | ee 00",
                                       "21 01 0a00 0300 2 | 64 19", "21 01 0100 0300 2 | 00 00",
                                       "21 01 0400 0300 2 | 06 00", "21 01 0500 0300 1 | 02",
                                       "21 01 0b00 0100 2 | 00 00", "21 01 0600 0100 2 | 00 00",
                                       "21 01 0400 0100 4 | a7 00 00 00",
                                       "21 01 0d00 0100 8 | 00 00 00 00 a0 8c 00 00",
                                       "21 01 0d00 0100 8 | 00 00 00 00 00 00 00 00"));
}

TEST_F(Actions, ARefusedWriteIsLoggedAndTheNextOneArrives) {
    const std::string failure = std::string(kRequestFailed) + "00000020";
    const struct {
        const char* slider;
        ControlId id;
        Wire refused;
        const char* mended;
    } rows[] = {
        {"m_sliderBright", {3, 2}, {"21 01 0200 0300 2 | 21 00 !"}, "21 01 0200 0300 2 | 04 00"},
        {"m_SliderNR2D", {16, 6}, {"a1 85 0600 1000 2 !"}, "21 01 0600 1000 1 | 04"},
    };
    for (const auto& row : rows) {
        const int before = window().log.count(failure);
        camera().setFaults({.stalled = {row.id}});
        window().moveSlider(row.slider, 33);
        EXPECT_EQ(arrived(), row.refused);
        EXPECT_EQ(window().log.count(failure), before + 1);
        camera().setFaults({});
        window().moveSlider(row.slider, 4);
        EXPECT_EQ(arrived().back(), row.mended);
    }
}

TEST_F(Actions, RestoreIsSentAndBothPagesAreReadAgain) {
    window().moveSlider("m_SliderNR2D", 1);
    window().moveSlider("m_sliderFocus", 9);
    camera().clearRequests();
    const NextBox box(QMessageBox::AcceptRole);
    window().buttonSending("OnBtnRestore:").click();
    const Wire wire = arrived();
    ASSERT_THAT(wire, SizeIs(4 + 2 * 13));
    EXPECT_EQ(wire[1], "a1 86 1700 1000 1 | 02");  // the driver's, at this control's first use
    EXPECT_EQ(wire[2], "a1 85 1700 1000 2 | 01 00");
    EXPECT_EQ(wire[3], "21 01 1700 1000 1 | 01");
    EXPECT_EQ(wire[4], "a1 85 0900 1000 2 | 18 00");
    EXPECT_EQ(window().shown("m_SliderNR2D"), "3");
    EXPECT_EQ(window().shown("m_btnStyleDefault"), "on");
    EXPECT_GT(window().slider("m_sliderFocus").value(), 100);  // on its way from the default
    endAutomaticModes();
}

class Drag : public testing::Test, public KernelWindow {};

TEST_F(Drag, CameraPulledOutOnTheWayIsLoggedAndTheNextOneWorks) {
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
