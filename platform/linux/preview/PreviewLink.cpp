#include "platform/linux/preview/PreviewLink.h"

#include <fmt/format.h>

#include <utility>

namespace platform {

void PreviewLink::cut() {
    cut_.request_stop();
    const std::lock_guard callUnderWay(mutex_);
}

void PreviewLink::deliver(VideoFrame frame) {
    const std::lock_guard lock(mutex_);
    if (isCut())
        return;
    const auto before = std::exchange(latest_, Clock::now());
    // The first one after a pause may be the only one: a camera that is merely very slow is told of
    // once, and not with each picture.
    if (isMissed_ && latest_ - before < patience_) {
        isMissed_ = false;
        changed_.notify_all();
        sink_.noted("Pictures come from the camera now.");
    }
    sink_.frame(std::move(frame));
}

void PreviewLink::leaveOut(const std::string& kind) {
    const std::lock_guard lock(mutex_);
    if (leftOut_.insert(kind).second && !isCut())
        sink_.noted(fmt::format("The camera has sent {}; such pictures are left out.", kind));
}

void PreviewLink::fail(std::string reason) {
    const std::lock_guard lock(mutex_);
    if (failure_.empty())
        failure_ = std::move(reason);
    changed_.notify_all();
}

std::string PreviewLink::failure() const {
    const std::lock_guard lock(mutex_);
    return failure_;
}

void PreviewLink::wait() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, untilCut(), [this] { return !failure_.empty(); });
}

void PreviewLink::watch() {
    std::unique_lock lock(mutex_);
    while (!hasEnded_ && !isCut()) {
        const bool isDue = Clock::now() - latest_ >= patience_;
        if (isDue && !std::exchange(isMissed_, true))
            sink_.noted("No picture comes from the camera.");
        if (isMissed_)
            changed_.wait(lock, untilCut(), [this] { return hasEnded_ || !isMissed_; });
        else
            changed_.wait_until(lock, untilCut(), latest_ + patience_,
                                [this] { return hasEnded_; });
    }
}

void PreviewLink::report(std::string reason) {
    const std::lock_guard lock(mutex_);
    hasEnded_ = true;
    changed_.notify_all();
    if (!isCut())
        sink_.failed(std::move(reason));
}

}  // namespace platform
