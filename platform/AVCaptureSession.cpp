#include "platform/AVCaptureSession.h"

#include <mutex>
#include <string>
#include <utility>

#include "platform/MainLoop.h"
#include "platform/NSLog.h"
#include "platform/backend/CaptureBackend.h"

/// Where the back end's thread leaves a frame for the main thread. At most one waits: a newer one
/// takes its place, and the main thread is called once for all that came in between.
class AVCaptureSession::FrameSlot : public platform::VideoSink,
                                    public std::enable_shared_from_this<FrameSlot> {
  public:
    void frame(platform::VideoFrame frame) override {
        bool callMain = false;
        {
            const std::lock_guard lock(mutex_);
            callMain = !waiting_;
            waiting_ = std::make_shared<const platform::VideoFrame>(std::move(frame));
        }
        if (callMain)
            platform::postToMainThread([slot = weak_from_this()] {
                if (const auto self = slot.lock())
                    self->show();
            });
    }

    void noted(std::string remark) override { log(std::move(remark)); }

    void failed(std::string reason) override { log("ERROR: trying to open camera: " + reason); }

    std::shared_ptr<const platform::VideoFrame> shown() const { return shown_; }

    void watch(std::weak_ptr<CALayer> watcher) { watchers_.push_back(std::move(watcher)); }

  private:
    void log(std::string line) {
        platform::postToMainThread([slot = weak_from_this(), line = std::move(line)] {
            if (!slot.expired())
                NSLog("%@", line);
        });
    }

    void show() {
        {
            const std::lock_guard lock(mutex_);
            shown_ = std::exchange(waiting_, nullptr);
        }
        for (const auto& watcher : watchers_)
            if (const auto layer = watcher.lock())
                layer->setNeedsDisplay();
    }

    std::mutex mutex_;
    std::shared_ptr<const platform::VideoFrame> waiting_;  // guarded by mutex_
    std::shared_ptr<const platform::VideoFrame> shown_;    // main thread
    std::vector<std::weak_ptr<CALayer>> watchers_;         // main thread
};

std::unique_ptr<AVCaptureDeviceInput> AVCaptureDeviceInput::deviceInputWithDevice(
    const AVCaptureDevice& device, NSError& error) {
    auto source = device.device_->open(error.description);
    return source ? std::make_unique<AVCaptureDeviceInput>(std::move(source)) : nullptr;
}

AVCaptureDeviceInput::AVCaptureDeviceInput(std::unique_ptr<platform::VideoSource> source)
    : source_(std::move(source)) {}

AVCaptureDeviceInput::~AVCaptureDeviceInput() = default;

AVCaptureSession::AVCaptureSession() : slot_(std::make_shared<FrameSlot>()) {}

AVCaptureSession::~AVCaptureSession() {
    stopRunning();
}

void AVCaptureSession::setSessionPreset(AVCaptureSessionPreset preset) {
    preset_ = preset;
}

void AVCaptureSession::addInput(std::unique_ptr<AVCaptureDeviceInput> input) {
    stopRunning();
    input_ = std::move(input);
}

void AVCaptureSession::startRunning() {
    if (!input_ || running_)
        return;
    running_ = true;
    input_->source_->start({preset_.width, preset_.height}, *slot_);
}

void AVCaptureSession::stopRunning() {
    if (std::exchange(running_, false))
        input_->source_->stop();
}

std::shared_ptr<const platform::VideoFrame> AVCaptureSession::latestFrame() const {
    return slot_->shown();
}

void AVCaptureSession::watchFrames(std::weak_ptr<CALayer> watcher) {
    slot_->watch(std::move(watcher));
}

std::shared_ptr<AVCaptureVideoPreviewLayer> AVCaptureVideoPreviewLayer::initWithSession(
    const std::shared_ptr<AVCaptureSession>& session) {
    std::shared_ptr<AVCaptureVideoPreviewLayer> layer(new AVCaptureVideoPreviewLayer(session));
    session->watchFrames(layer);
    return layer;
}

AVCaptureVideoPreviewLayer::AVCaptureVideoPreviewLayer(std::shared_ptr<AVCaptureSession> session)
    : session_(std::move(session)) {}

std::shared_ptr<const platform::VideoFrame> AVCaptureVideoPreviewLayer::contents() const {
    return session_->latestFrame();
}
