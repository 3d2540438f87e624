#include <gmock/gmock.h>

#include <cerrno>
#include <cmath>
#include <cstring>

#include "tests/kernel/FrameCatcher.h"
#include "tests/kernel/KernelBench.h"
#include "virtualcam/DemoBus.h"

namespace {

using platform::VideoFrame;

int greenAt(const VideoFrame& frame, int x, int y) {
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, frame.pixels + y * frame.bytesPerLine + std::ptrdiff_t{4} * x, 4);
    return static_cast<int>(pixel >> 8 & 0xFF);
}

/// How much two pictures of one size differ, the second one mirrored if asked.
long difference(const VideoFrame& one, const VideoFrame& other, bool mirrored) {
    long sum = 0;
    for (int y = 0; y < one.height; y += 2)
        for (int x = 0; x < one.width; x += 2)
            sum +=
                std::abs(greenAt(one, x, y) - greenAt(other, mirrored ? one.width - 1 - x : x, y));
    return sum;
}

class Preview : public testing::Test {
  protected:
    std::unique_ptr<platform::VideoSource> start(const PluggedCamera& plugged) {
        std::string error;
        auto source = plugged.device->open(error);
        EXPECT_TRUE(source) << error;
        if (source)
            source->start({320, 240}, catcher);
        return source;
    }
    bool waitForFrames(int more) {
        const int wanted = catcher.state().frames + more;
        return waitUntil(
            [&] { return catcher.state().frames >= wanted || !catcher.state().failures.empty(); });
    }

    KernelBench bench;
    FrameCatcher catcher;
};

}  // namespace

TEST_F(Preview, PicturesFollowTheFlip) {
    const auto plugged = bench.plug(virtualcam::studioCamera(), 0);
    const auto source = start(plugged);
    ASSERT_TRUE(source);
    ASSERT_TRUE(waitForFrames(2));
    const VideoFrame before = catcher.state().latest;
    ASSERT_EQ(before.width, 320);
    ASSERT_EQ(before.height, 240);
    const auto interface = bench.openInterface(0);
    std::vector<std::uint8_t> on{1};
    const virtualcam::ControlId flip{virtualcam::kVendorUnit, virtualcam::XU_FLIP_H};
    ASSERT_EQ(transfer(*interface, virtualcam::SET_CUR, flip, on), 0);
    EXPECT_TRUE(waitUntil([&] {
        const VideoFrame& now = catcher.state().latest;
        return difference(before, now, true) < difference(before, now, false);
    }));
    source->stop();
    EXPECT_THAT(catcher.state().failures, testing::IsEmpty());
}

TEST_F(Preview, StoppedAndStartedAgainDeliversAgain) {
    const auto plugged = bench.plug(virtualcam::studioCamera(), 0);
    for (int round = 0; round < 2; ++round) {
        const auto source = start(plugged);
        ASSERT_TRUE(source);
        EXPECT_TRUE(waitForFrames(1));
    }
    EXPECT_THAT(catcher.state().failures, testing::IsEmpty());
}

TEST_F(Preview, CameraPulledOutWhileStreamingFailsOnce) {
    auto plugged = bench.plug(virtualcam::studioCamera(), 0);
    const auto source = start(plugged);
    ASSERT_TRUE(source);
    ASSERT_TRUE(waitForFrames(1));
    bench.unplug(plugged);
    EXPECT_TRUE(waitUntil([&] { return !catcher.state().failures.empty(); }));
    source->stop();
    EXPECT_EQ(catcher.state().failures.size(), 1U);
    std::string error;
    EXPECT_FALSE(plugged.device->open(error));
    EXPECT_FALSE(error.empty());
}
