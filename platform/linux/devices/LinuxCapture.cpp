#include "platform/linux/devices/LinuxCapture.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "platform/linux/devices/LinuxUsb.h"
#include "platform/linux/devices/UdevFeed.h"
#include "platform/linux/devices/VideoNode.h"
#include "platform/linux/preview/ClosingPreviews.h"
#include "platform/linux/preview/PreviewPipeline.h"

namespace platform {

/// Remembers what was known of the node when it appeared: once it has gone, nothing can be asked.
class LinuxCapture::Device : public CaptureDevice {
  public:
    explicit Device(NodeFacts facts) : facts_(std::move(facts)) {}

    const NodeFacts& facts() const { return facts_; }

    std::string uniqueID() const override { return uniqueIdentifier(facts_); }
    std::string localizedName() const override { return displayName(facts_); }
    bool hasVideo() const override { return facts_.hasVideo; }

    std::unique_ptr<VideoSource> open(std::string& error) override {
        // What has to be asked of the camera is found out on the preview's thread.
        error = facts_.hasVideo ? whyNotOpenable(facts_.devnode) : "This device delivers no video.";
        return error.empty() ? openPreview(facts_.devnode) : nullptr;
    }

  private:
    NodeFacts facts_;
};

LinuxCapture::LinuxCapture() : LinuxCapture(std::make_unique<UdevFeed>()) {}

LinuxCapture::LinuxCapture(std::unique_ptr<NodeFeed> feed) : feed_(std::move(feed)) {}

LinuxCapture::~LinuxCapture() {
    // A camera that hangs is left to the kernel, which closes it with the process.
    ClosingPreviews::all().waitForAll(std::chrono::seconds(2));
}

std::vector<std::shared_ptr<CaptureDevice>> LinuxCapture::devices() {
    // With a listener the list changes only together with an announcement.
    if (!looked_)
        lookAgain();
    else if (listener_ == nullptr)
        takeEvents();
    return {attached_.begin(), attached_.end()};
}

void LinuxCapture::setListener(CaptureListener* listener) {
    if (!looked_)
        lookAgain();
    listener_ = listener;
    watch_.reset();
    if (listener_ != nullptr && feed_->descriptor() >= 0)
        watch_ = watchReadable(feed_->descriptor(), [this] { takeEvents(); });
}

void LinuxCapture::takeEvents() {
    bool lost = false;
    while (const auto event = feed_->next()) {
        // What is queued behind a loss is older than the new look, which comes when the queue is
        // empty: until then the kernel drops further events without a word.
        lost = lost || event->change == NodeFeed::Change::overflow;
        if (lost)
            continue;
        const auto known = find(event->facts.syspath);
        if (event->change == NodeFeed::Change::left) {
            if (known)
                remove(known);
        } else if (!known) {
            add(std::make_shared<Device>(event->facts));
        }
    }
    if (lost)
        lookAgain();
}

/// Compares the list with what is attached, and makes up for the difference.
void LinuxCapture::lookAgain() {
    looked_ = true;
    const std::vector<NodeFacts> now = feed_->attached();
    const auto before = attached_;
    for (const auto& device : before)
        if (std::ranges::find(now, device->facts()) == now.end())
            remove(device);
    for (const NodeFacts& facts : now)
        if (!find(facts.syspath))
            add(std::make_shared<Device>(facts));
}

void LinuxCapture::add(std::shared_ptr<Device> device) {
    attached_.push_back(device);
    if (listener_ != nullptr)
        listener_->arrived(std::move(device));
}

void LinuxCapture::remove(const std::shared_ptr<Device>& device) {
    std::erase(attached_, device);
    LinuxUsb::nodeLeft(device->facts().devnode);
    if (listener_ != nullptr)
        listener_->left(device);
}

std::shared_ptr<LinuxCapture::Device> LinuxCapture::find(const std::string& syspath) const {
    const auto found = std::ranges::find_if(
        attached_, [&](const auto& device) { return device->facts().syspath == syspath; });
    return found == attached_.end() ? nullptr : *found;
}

}  // namespace platform
