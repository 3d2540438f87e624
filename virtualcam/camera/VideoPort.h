#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stop_token>
#include <string>

namespace virtualcam {

/// The video output of a plugged-in camera: one source at a time may run on it. Thread-safe.
class VideoPort {
  public:
    /// Takes the port for a running source: false when another one has it.
    bool claim();
    void release();

    /// Ends the pictures for good: the camera is no longer there.
    void detach();
    bool isAttached() const;

    enum class Wake { time, stopped, failed };

    /// Waits until `deadline` or until something ends the pictures. Where that is a failure,
    /// stores its `reason`.
    Wake wait(std::chrono::steady_clock::time_point deadline, const std::stop_token& stop,
              std::string& reason);

  private:
    mutable std::mutex mutex_;  // guards all below
    std::condition_variable_any changed_;
    bool attached_ = true;
    bool claimed_ = false;
    std::string failure_;
};

}  // namespace virtualcam
