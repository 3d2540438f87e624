#include "virtualcam/camera/FrameSource.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <span>
#include <string>
#include <utility>

#include "platform/backend/OpaqueRows.h"

namespace virtualcam {
namespace {

using Clock = std::chrono::steady_clock;

/// The camera's picture sizes, the largest first.
constexpr std::array<PictureSize, 3> sizes{{{640, 480}, {320, 240}, {160, 120}}};

/// The largest size within the limits, or else the smallest there is.
PictureSize sizeWithin(const platform::VideoLimits& limits) {
    const auto* size = std::ranges::find_if(sizes, [&](const PictureSize& each) {
        return each.width <= limits.width && each.height <= limits.height;
    });
    return size == sizes.end() ? sizes.back() : *size;
}

}  // namespace

FrameSource::FrameSource(std::shared_ptr<VirtualCamera> camera, std::shared_ptr<VideoPort> port)
    : camera_(std::move(camera)), port_(std::move(port)) {}

FrameSource::~FrameSource() {
    stop();
}

void FrameSource::start(const platform::VideoLimits& limits, platform::VideoSink& sink) {
    stop();
    const bool claimed = port_->claim();
    const PictureSize size = sizeWithin(limits);
    thread_ = std::jthread([this, claimed, size, &sink](const std::stop_token& stop) {
        if (claimed)
            deliver(stop, size, sink);
        else
            sink.failed("The camera is in use by another program.");
    });
}

void FrameSource::stop() {
    if (thread_.joinable()) {
        thread_.request_stop();
        thread_.join();
    }
}

void FrameSource::deliver(const std::stop_token& stop, PictureSize size,
                          platform::VideoSink& sink) {
    constexpr auto interval = std::chrono::nanoseconds(std::chrono::seconds(1)) / framesPerSecond;
    const auto count = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
    const std::unique_ptr<FrameGenerator> generator = makeSceneGenerator(size);
    std::string reason;
    auto wake = VideoPort::Wake::time;
    Clock::time_point next = Clock::now();
    for (std::uint64_t index = 0;; ++index) {
        wake = port_->wait(next, stop, reason);
        if (wake != VideoPort::Wake::time)
            break;
        const PictureState state = camera_->nextPicture();
        // The sink may hold on to earlier pictures, so each is drawn into memory of its own.
        const auto pixels = std::make_shared_for_overwrite<std::uint32_t[]>(count);
        generator->generate(state, index, {pixels.get(), count});
        sink.frame({size.width, size.height, [size, pixels](std::byte* target, int line) {
                        platform::copyOpaque(reinterpret_cast<const std::byte*>(pixels.get()),
                                             size.width * 4, size.width, size.height, target, line);
                    }});
        next = std::max(next + interval, Clock::now() - interval);
    }
    port_->release();
    if (wake == VideoPort::Wake::failed)
        sink.failed(reason);
}

}  // namespace virtualcam
