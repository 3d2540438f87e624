#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <set>
#include <stop_token>
#include <string>

namespace platform {

/// The previews that have been stopped and still hold their cameras, each on a thread of its own.
/// The next preview of such a camera waits for that on its own thread: the camera would refuse it.
/// So a camera that hangs keeps one thread closing and at most one waiting. Shared with these
/// threads, as they may outlive whoever started them. Thread-safe.
class ClosingPreviews {
  public:
    /// A preview from its start to the end of its thread.
    class Hold {
      public:
        explicit Hold(std::string camera) : camera_(std::move(camera)) {}

      private:
        friend class ClosingPreviews;
        const std::string camera_;
        bool stopped_ = false;
        bool ended_ = false;
    };

    /// Waits until no stopped preview holds the camera; false when `stop` is requested first.
    bool waitForCamera(const Hold& hold, const std::stop_token& stop);

    /// Says that the preview is stopped, and that its thread has ended; in either order.
    void stopped(Hold& hold);
    void ended(Hold& hold);

    /// Waits until all are closed, so that the process can end in order; false when that takes
    /// longer than `patience`, after which it may end all the same.
    bool waitForAll(std::chrono::milliseconds patience);

  private:
    std::mutex mutex_;  // guards all below, and every hold
    std::condition_variable_any changed_;
    std::multiset<std::string> cameras_;
};

}  // namespace platform
