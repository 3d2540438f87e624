#include "platform/linux/preview/PreviewLink.h"

#include <utility>

namespace platform {

void PreviewLink::cut() {
    cut_.request_stop();
    const std::lock_guard callUnderWay(mutex_);
}

void PreviewLink::deliver(VideoFrame frame) {
    const std::lock_guard lock(mutex_);
    if (!isCut())
        sink_.frame(std::move(frame));
}

void PreviewLink::leaveOut() {
    const std::lock_guard lock(mutex_);
    if (!std::exchange(hasLeftOut_, true) && !isCut())
        sink_.noted("The camera has sent a damaged picture; such pictures are left out.");
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

void PreviewLink::report(std::string reason) {
    const std::lock_guard lock(mutex_);
    if (!isCut())
        sink_.failed(std::move(reason));
}

}  // namespace platform
