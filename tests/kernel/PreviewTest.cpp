#include <gmock/gmock.h>

#include "tests/kernel/FrameCatcher.h"
#include "tests/kernel/KernelBench.h"
#include "tests/support/Pixels.h"
#include "virtualcam/DemoBus.h"

namespace {

class Preview : public testing::Test {
  protected:
    /// Starts a preview and waits for its first pictures.
    std::unique_ptr<platform::VideoSource> start(const PluggedCamera& plugged) {
        std::string error;
        auto source = plugged.device->open(error);
        EXPECT_EQ(error, "");
        source->start({320, 240}, catcher);
        const int before = catcher.state().frames;
        EXPECT_TRUE(waitUntil([&] { return catcher.state().frames > before + 1; }));
        return source;
    }

    /// Whether the latest picture is brighter at the right edge than at the left one.
    bool isBrightAtTheRight() const {
        const platform::VideoFrame& frame = catcher.state().latest;
        const auto pixels = pixelsOf(frame);
        const auto row = pixels.begin() + frame.height / 2 * frame.width;
        return (row[frame.width - 9] & 0xFFU) > (row[8] & 0xFFU);
    }

    KernelBench bench;
    FrameCatcher catcher;
};

}  // namespace

TEST_F(Preview, ComesFromItsCameraAndFollowsTheFlip) {
    const auto other = bench.plug(virtualcam::classicCamera(), 1);
    const auto plugged = bench.plug(virtualcam::studioCamera(), 0);
    const auto source = start(plugged);
    EXPECT_EQ(catcher.state().latest.width, 320);
    EXPECT_EQ(catcher.state().latest.height, 240);
    EXPECT_TRUE(isBrightAtTheRight());
    const auto interface = bench.openInterface(0);
    std::vector<std::uint8_t> on{1};
    const virtualcam::ControlId flip{virtualcam::kVendorUnit, virtualcam::XU_FLIP_H};
    ASSERT_EQ(transfer(*interface, virtualcam::SET_CUR, flip, on), 0);
    EXPECT_TRUE(waitUntil([&] { return !isBrightAtTheRight(); }));
    source->stop();
    EXPECT_THAT(catcher.state().failures, testing::IsEmpty());
}

TEST_F(Preview, IsStartedAgainAndFailsOnceWhenTheCameraIsPulledOut) {
    auto plugged = bench.plug(virtualcam::studioCamera(), 0);
    start(plugged).reset();
    const auto source = start(plugged);
    EXPECT_THAT(catcher.state().failures, testing::IsEmpty());
    bench.unplug(plugged);
    EXPECT_TRUE(waitUntil([&] { return !catcher.state().failures.empty(); }));
    source->stop();
    EXPECT_EQ(catcher.state().failures.size(), 1U);
    std::string error;
    EXPECT_FALSE(plugged.device->open(error));
    EXPECT_THAT(error, testing::EndsWith(" is gone."));
}
