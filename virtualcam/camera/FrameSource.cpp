#include "virtualcam/camera/FrameSource.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/backend/OpaqueRows.h"

namespace virtualcam {
namespace {

using Clock = std::chrono::steady_clock;
using Pixels = std::vector<std::uint32_t>;

/// The camera's picture sizes, the largest first.
constexpr std::array<PictureSize, 3> kSizes{{{640, 480}, {320, 240}, {160, 120}}};

/// The largest size within the limits, or else the smallest there is.
PictureSize sizeWithin(const platform::VideoLimits& limits) {
    const auto* size = std::ranges::find_if(kSizes, [&](const PictureSize& each) {
        return each.width <= limits.width && each.height <= limits.height;
    });
    return size == kSizes.end() ? kSizes.back() : *size;
}

}  // namespace

/// A few buffers that travel to the sink and come back when it lets go of them.
class FrameSource::Pool : public std::enable_shared_from_this<Pool> {
  public:
    explicit Pool(PictureSize size) {
        const auto pixels =
            static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
        for (int i = 0; i < 4; ++i)
            free_.push_back(std::make_unique<Pixels>(pixels));
    }

    /// Returns a buffer, or null while the sink holds them all.
    std::shared_ptr<Pixels> take() {
        const std::lock_guard lock(mutex_);
        if (free_.empty())
            return nullptr;
        std::unique_ptr<Pixels> pixels = std::move(free_.back());
        free_.pop_back();
        return {pixels.release(), [pool = shared_from_this()](Pixels* back) {
                    pool->give(std::unique_ptr<Pixels>(back));
                }};
    }

  private:
    void give(std::unique_ptr<Pixels> pixels) {
        const std::lock_guard lock(mutex_);
        free_.push_back(std::move(pixels));
    }

    std::mutex mutex_;
    std::vector<std::unique_ptr<Pixels>> free_;  // guarded by mutex_
};

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
    constexpr auto kInterval = std::chrono::nanoseconds(std::chrono::seconds(1)) / kFramesPerSecond;
    const auto pool = std::make_shared<Pool>(size);
    const std::unique_ptr<FrameGenerator> generator = makeSceneGenerator();
    generator->configure(size);
    std::string reason;
    auto wake = VideoPort::Wake::time;
    Clock::time_point next = Clock::now();
    for (std::uint64_t index = 0;; ++index) {
        wake = port_->wait(next, stop, reason);
        if (wake != VideoPort::Wake::time)
            break;
        const PictureState state = camera_->nextPicture();
        // Like a sensor, the scene goes on while the host is too slow to take a picture.
        if (const auto pixels = pool->take()) {
            generator->generate(state, index, *pixels);
            sink.frame({size.width, size.height, [size, pixels](std::byte* target, int line) {
                            platform::copyOpaque(reinterpret_cast<const std::byte*>(pixels->data()),
                                                 size.width * 4, size.width, size.height, target,
                                                 line);
                        }});
        }
        next = std::max(next + kInterval, Clock::now() - kInterval);
    }
    port_->release();
    if (wake == VideoPort::Wake::failed)
        sink.failed(reason);
}

}  // namespace virtualcam
