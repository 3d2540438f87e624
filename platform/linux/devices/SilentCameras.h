#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <utility>
#include <vector>

#include "platform/linux/devices/NodeFacts.h"

namespace platform {

/// The cameras that have just let a request time out. Each further one would hold the window for as
/// long again, so none is sent until the camera has had some rest; one that is plugged in again is
/// another camera. Main thread only.
class SilentCameras {
  public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    /// How long a camera is left alone, from the end of the request that it did not answer.
    static constexpr std::chrono::seconds rest{5};

    explicit SilentCameras(Clock now) : now_(std::move(now)) {}

    void add(const Attachment& camera) { ends_.emplace_back(camera, now_() + rest); }

    bool contains(const Attachment& camera) {
        std::erase_if(ends_, [now = now_()](const End& end) { return end.second <= now; });
        return std::ranges::find(ends_, camera, &End::first) != ends_.end();
    }

  private:
    using End = std::pair<Attachment, std::chrono::steady_clock::time_point>;

    const Clock now_;
    std::vector<End> ends_;
};

}  // namespace platform
