#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <set>
#include <stop_token>
#include <string>

#include "platform/backend/CaptureBackend.h"

namespace platform {

/// Connects a preview's thread to the sink until it is cut. The thread may go on for as long as
/// the camera holds it up; whoever cuts the link need not wait for that. Thread-safe.
class PreviewLink {
  public:
    /// `patience` is how long no picture may come before the sink is told.
    PreviewLink(VideoSink& sink, std::chrono::milliseconds patience)
        : sink_(sink), patience_(patience) {}

    /// No call to the sink is under way or follows after the return.
    void cut();
    bool isCut() const { return cut_.stop_requested(); }
    std::stop_token untilCut() const { return cut_.get_token(); }

    void deliver(VideoFrame frame);

    /// Tells the sink that a picture of this kind is left out, for the first one.
    void leaveOut(const std::string& kind);
    static constexpr const char* damaged = "a damaged picture";

    /// Keeps the first failure: those that follow are its consequences.
    void fail(std::string reason);
    std::string failure() const;

    /// Waits until the link is cut or something fails.
    void wait();

    /// Tells the sink when no picture comes, and when pictures come again, once each time, until
    /// the preview has ended. On a thread of its own, as a camera may hold up the preview's.
    void watch();

    /// Tells the sink why the preview has ended.
    void report(std::string reason);

  private:
    using Clock = std::chrono::steady_clock;

    std::stop_source cut_;
    mutable std::mutex mutex_;  // guards all below, and held while the sink is called
    std::condition_variable_any changed_;
    VideoSink& sink_;
    const std::chrono::milliseconds patience_;
    Clock::time_point latest_ = Clock::now();  // when a picture came, at first when one was wanted
    bool isMissed_ = false;                    // the sink has been told that none comes
    bool hasEnded_ = false;
    std::set<std::string> leftOut_;
    std::string failure_;
};

}  // namespace platform
