// The scripted exchanges of both pages: what the window and the kernel's driver send on the wire.

#include <gtest/gtest.h>

#include "tests/kernel/KernelWindow.h"
#include "tests/support/CameraBench.h"
#include "virtualcam/DemoBus.h"

using namespace virtualcam;  // NOLINT(google-build-using-namespace): names of controls throughout

namespace {

/// A window with a camera open, on which the exchanges follow each other: plugging one in, or
/// giving every control its default, takes long.
class Actions : public testing::TestWithParam<Exchange> {
  protected:
    static void SetUpTestSuite() {
        shared_ = std::make_unique<Shared>();
        shared_->plugged = shared_->window.plug(studioCamera(), 0);
        setInCamera(camera(), {kCameraTerminal, virtualcam::CT_FOCUS_AUTO_CONTROL}, {0});
        setInCamera(camera(), {kCameraTerminal, virtualcam::CT_AE_MODE_CONTROL}, {1});
        setInCamera(camera(),
                    {kProcessingUnit, virtualcam::PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL}, {0});
        shared_->window.clickOpen();
    }
    static void TearDownTestSuite() { shared_.reset(); }

    static VirtualCamera& camera() { return shared_->plugged.camera(); }

    struct Shared {
        KernelWindow window;
        PluggedCamera plugged;
    };
    static inline std::unique_ptr<Shared> shared_;
};

}  // namespace

TEST_P(Actions, Arrive) {
    camera().clearRequests();
    shared_->window.log.take();
    shared_->window.perform(GetParam(), camera());
}
INSTANTIATE_TEST_SUITE_P(Pages, Actions,
                         testing::ValuesIn(readExchanges({"standard-page.txt", "vendor-page.txt"},
                                                         "kernel")),
                         [](const auto& exchange) { return exchange.param.name; });
