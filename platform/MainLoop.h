#pragma once

#include <functional>
#include <memory>

namespace platform {

/// Runs `task` on the main thread, after what is under way there. From any thread; a task posted
/// when the application loop does not exist is dropped. Implemented by the toolkit's back end.
void postToMainThread(std::function<void()> task);

/// A watched file descriptor; destroying it ends the watch.
class DescriptorWatch {
  public:
    virtual ~DescriptorWatch() = default;
};

/// Calls `ready` on the main thread each time `descriptor` can be read. Main thread only.
/// Implemented by the toolkit's back end.
std::unique_ptr<DescriptorWatch> watchReadable(int descriptor, std::function<void()> ready);

}  // namespace platform
