#include "platform/linux/preview/ClosingPreviews.h"

namespace platform {

bool ClosingPreviews::waitForCamera(const Hold& hold, const std::stop_token& stop) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, stop, [&] { return !cameras_.contains(hold.camera_); });
    return !stop.stop_requested();
}

void ClosingPreviews::stopped(Hold& hold) {
    const std::lock_guard lock(mutex_);
    if (hold.ended_)
        return;
    hold.stopped_ = true;
    cameras_.insert(hold.camera_);
}

void ClosingPreviews::ended(Hold& hold) {
    const std::lock_guard lock(mutex_);
    hold.ended_ = true;
    if (hold.stopped_)
        cameras_.extract(hold.camera_);
    changed_.notify_all();
}

bool ClosingPreviews::waitForAll(std::chrono::milliseconds patience) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, patience, [this] { return cameras_.empty(); });
}

}  // namespace platform
