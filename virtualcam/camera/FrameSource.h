#pragma once

#include <memory>
#include <stop_token>
#include <thread>

#include "platform/backend/CaptureBackend.h"
#include "virtualcam/camera/VideoPort.h"
#include "virtualcam/camera/VirtualCamera.h"
#include "virtualcam/scene/FrameGenerator.h"

namespace virtualcam {

/// Delivers a camera's pictures on a thread of its own, `framesPerSecond` of them.
class FrameSource : public platform::VideoSource {
  public:
    FrameSource(std::shared_ptr<VirtualCamera> camera, std::shared_ptr<VideoPort> port);
    FrameSource(const FrameSource&) = delete;
    FrameSource& operator=(const FrameSource&) = delete;
    ~FrameSource() override;

    void start(const platform::VideoLimits& limits, platform::VideoSink& sink) override;
    void stop() override;

  private:
    void deliver(const std::stop_token& stop, PictureSize size, platform::VideoSink& sink);

    std::shared_ptr<VirtualCamera> camera_;
    std::shared_ptr<VideoPort> port_;
    std::jthread thread_;
};

}  // namespace virtualcam
