#include "virtualcam/camera/VideoPort.h"

#include <utility>

namespace virtualcam {

bool VideoPort::claim() {
    const std::lock_guard lock(mutex_);
    return !std::exchange(claimed_, true);
}

void VideoPort::release() {
    const std::lock_guard lock(mutex_);
    claimed_ = false;
}

void VideoPort::detach() {
    const std::lock_guard lock(mutex_);
    attached_ = false;
    failure_ = "The camera has been unplugged.";
    changed_.notify_all();
}

bool VideoPort::isAttached() const {
    const std::lock_guard lock(mutex_);
    return attached_;
}

VideoPort::Wake VideoPort::wait(std::chrono::steady_clock::time_point deadline,
                                const std::stop_token& stop, std::string& reason) {
    std::unique_lock lock(mutex_);
    changed_.wait_until(lock, stop, deadline, [this] { return !failure_.empty(); });
    if (stop.stop_requested())
        return Wake::stopped;
    if (failure_.empty())
        return Wake::time;
    reason = failure_;
    return Wake::failed;
}

}  // namespace virtualcam
