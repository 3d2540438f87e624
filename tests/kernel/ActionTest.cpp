// The scripted exchanges of both pages: what the window and the kernel's driver send on the wire.

#include <gtest/gtest.h>

#include "tests/kernel/KernelWindow.h"
#include "virtualcam/DemoBus.h"

using namespace virtualcam;  // NOLINT(google-build-using-namespace): names of controls throughout

namespace {

/// A window with a camera open, which all exchanges share: plugging one in takes long.
class Actions : public testing::TestWithParam<Exchange> {
  protected:
    static void SetUpTestSuite() {
        shared_ = std::make_unique<Shared>();
        shared_->plugged = shared_->window.plug(studioCamera(), 0);
        endAutomaticModes();
        window().clickOpen();
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

    /// Gives every control its default, as the user would.
    static void restore() {
        const NextBox box(QMessageBox::AcceptRole);
        window().click("OnBtnRestore:");
        endAutomaticModes();
        window().click("OnBtnUvcDefault:");
        camera().clearRequests();
        window().log.take();
    }

  private:
    struct Shared {
        KernelWindow window;
        PluggedCamera plugged;
    };
    static inline std::unique_ptr<Shared> shared_;
};

}  // namespace

TEST_P(Actions, Arrive) {
    restore();
    window().perform(GetParam(), camera());
}
INSTANTIATE_TEST_SUITE_P(Pages, Actions,
                         testing::ValuesIn(readExchanges({"standard-page.txt", "vendor-page.txt"},
                                                         "kernel")),
                         [](const auto& exchange) { return exchange.param.name; });
