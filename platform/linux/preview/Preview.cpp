#include "platform/linux/preview/Preview.h"

#include <thread>
#include <utility>

#include "platform/linux/devices/ListedNode.h"
#include "platform/linux/preview/ClosingPreviews.h"
#include "platform/linux/preview/Pipeline.h"
#include "platform/linux/preview/PreviewLink.h"

namespace platform {
namespace {

/// One run of a preview, shared with its thread, which does all that may wait for the camera.
class Run {
  public:
    Run(PreviewOrigin origin, const VideoLimits& limits, VideoSink& sink,
        std::shared_ptr<ClosingPreviews> closing)
        : origin_(std::move(origin)),
          limits_(limits),
          link_(sink, origin_.patience),
          closing_(std::move(closing)),
          hold_(origin_.camera) {}

    void perform() {
        std::thread watch([this] { link_.watch(); });
        show();
        watch.join();
        closing_->ended(hold_);
    }

    /// Returns at once; the thread closes the camera when the camera lets it.
    void stop() {
        link_.cut();
        closing_->stopped(hold_);
    }

  private:
    void show() {
        if (!closing_->waitForCamera(hold_, link_.untilCut()))
            return;
        std::string known = showWhileHeld();
        link_.report(known.empty() ? link_.failure() : std::move(known));
    }

    /// Returns why the camera can't be shown, if it says so.
    std::string showWhileHeld() {
        VideoNode held;
        // Asked first: merely trying a mode would disturb the pictures that another program takes.
        std::string known = origin_.hold(held);
        if (!known.empty())
            return known;
        showUntilTheEnd();
        return link_.isCut() ? std::string() : origin_.hold(held);
    }

    void showUntilTheEnd() {
        std::string failure = loadGStreamer();
        GstElement* source = failure.empty() ? origin_.makeElement(failure) : nullptr;
        if (source == nullptr) {
            link_.fail(std::move(failure));
            return;
        }
        Pipeline pipeline(link_);
        pipeline.start(source, limits_);
        link_.wait();
    }

    const PreviewOrigin origin_;
    const VideoLimits limits_;
    PreviewLink link_;
    const std::shared_ptr<ClosingPreviews> closing_;
    ClosingPreviews::Hold hold_;
};

class Preview : public VideoSource {
  public:
    Preview(PreviewOrigin origin, std::shared_ptr<ClosingPreviews> closing)
        : origin_(std::move(origin)), closing_(std::move(closing)) {}
    Preview(const Preview&) = delete;
    Preview& operator=(const Preview&) = delete;
    ~Preview() override { halt(); }

    void start(const VideoLimits& limits, VideoSink& sink) override {
        halt();
        const auto run = std::make_shared<Run>(origin_, limits, sink, closing_);
        std::thread([run] { run->perform(); }).detach();
        run_ = run;
    }

    void stop() override { halt(); }

  private:
    void halt() {
        if (const auto run = std::exchange(run_, nullptr))
            run->stop();
    }

    const PreviewOrigin origin_;
    const std::shared_ptr<ClosingPreviews> closing_;
    std::shared_ptr<Run> run_;
};

}  // namespace

std::unique_ptr<VideoSource> makePreview(PreviewOrigin origin,
                                         std::shared_ptr<ClosingPreviews> closing) {
    return std::make_unique<Preview>(std::move(origin), std::move(closing));
}

std::unique_ptr<VideoSource> openPreview(const NodeFacts& camera,
                                         std::shared_ptr<ClosingPreviews> closing) {
    const auto makeSource = [path = camera.devnode](std::string& failure) {
        GstElement* source = makeElement("v4l2src", failure);
        if (source != nullptr)
            g_object_set(source, "device", path.c_str(), nullptr);
        return source;
    };
    const auto hold = [camera](VideoNode& held) {
        int status = openListed(camera, held);
        if (status == 0)
            status = checkUnused(held);
        return status == 0 ? std::string() : openFailure(camera.devnode, status);
    };
    return makePreview({makeSource, hold, camera.devnode}, std::move(closing));
}

}  // namespace platform
