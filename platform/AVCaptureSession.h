#pragma once

#include <memory>
#include <vector>

#include "platform/AVCaptureDevice.h"
#include "platform/CALayer.h"
#include "platform/NSError.h"

namespace platform {
struct VideoFrame;
class VideoSource;
}  // namespace platform

/// How large a session's picture should be at the most, in pixels.
struct AVCaptureSessionPreset {
    int width;
    int height;
};

inline constexpr AVCaptureSessionPreset AVCaptureSessionPresetMedium{640, 480};

/// A capture device that was opened for a session.
class AVCaptureDeviceInput {
  public:
    /// Opens `device`. On failure returns null and fills `error`.
    static std::unique_ptr<AVCaptureDeviceInput> deviceInputWithDevice(
        const AVCaptureDevice& device, NSError& error);

    explicit AVCaptureDeviceInput(std::unique_ptr<platform::VideoSource> source);
    AVCaptureDeviceInput(const AVCaptureDeviceInput&) = delete;
    AVCaptureDeviceInput& operator=(const AVCaptureDeviceInput&) = delete;
    ~AVCaptureDeviceInput();

  private:
    friend class AVCaptureSession;

    std::unique_ptr<platform::VideoSource> source_;
};

/// Carries the picture of one input to the preview layers made on it. Frames arrive on the back
/// end's thread and wait in a slot for one; the main thread takes the latest. Main thread only.
/// A source that stops by itself is logged, once, as a camera that could not be opened.
class AVCaptureSession {
  public:
    AVCaptureSession();
    AVCaptureSession(const AVCaptureSession&) = delete;
    AVCaptureSession& operator=(const AVCaptureSession&) = delete;
    ~AVCaptureSession();

    /// Without a preset a camera's smallest picture comes.
    void setSessionPreset(AVCaptureSessionPreset preset);

    /// Adds the session's one input, in the place of one before; stops a running session.
    void addInput(std::unique_ptr<AVCaptureDeviceInput> input);

    /// Starts the flow of video; without an input there is none.
    void startRunning();

    /// Stops the flow; the last picture stays.
    void stopRunning();

    /// What the preview layers show: the latest frame, or null before the first.
    std::shared_ptr<const platform::VideoFrame> latestFrame() const;

    /// Marks `watcher` for drawing after each change of `latestFrame`, as long as it lives.
    void watchFrames(std::weak_ptr<CALayer> watcher);

  private:
    class FrameSlot;

    AVCaptureSessionPreset preset_{0, 0};
    std::shared_ptr<FrameSlot> slot_;
    std::unique_ptr<AVCaptureDeviceInput> input_;
    bool running_ = false;
};

/// A layer that shows a session's video.
class AVCaptureVideoPreviewLayer : public CALayer {
  public:
    static std::shared_ptr<AVCaptureVideoPreviewLayer> initWithSession(
        const std::shared_ptr<AVCaptureSession>& session);

    std::shared_ptr<const platform::VideoFrame> contents() const override;

  protected:
    const char* className() const override { return "AVCaptureVideoPreviewLayer"; }

  private:
    explicit AVCaptureVideoPreviewLayer(std::shared_ptr<AVCaptureSession> session);

    std::shared_ptr<AVCaptureSession> session_;
};
