#include "platform/linux/devices/LinuxCapture.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "platform/linux/devices/KeptNode.h"
#include "platform/linux/devices/UdevFeed.h"
#include "platform/linux/devices/VideoNode.h"
#include "platform/linux/preview/ClosingPreviews.h"
#include "platform/linux/preview/Preview.h"

namespace platform {

/// Remembers what was known of the node when it appeared: once it has gone, nothing can be asked.
class LinuxCapture::Device : public CaptureDevice {
  public:
    Device(NodeFacts facts, std::shared_ptr<ClosingPreviews> closing)
        : facts_(std::move(facts)), closing_(std::move(closing)) {}

    const NodeFacts& facts() const { return facts_; }

    std::string uniqueID() const override { return uniqueIdentifier(facts_); }
    std::string localizedName() const override { return displayName(facts_); }
    bool hasVideo() const override { return facts_.hasVideo; }

    std::unique_ptr<VideoSource> open(std::string& error) override {
        // Only the file is looked at. The camera may take long, and is asked on the preview's
        // thread.
        error = facts_.hasVideo ? whyNotOpenable(facts_.devnode) : "This device delivers no video.";
        return error.empty() ? openPreview(facts_, closing_) : nullptr;
    }

  private:
    NodeFacts facts_;
    std::shared_ptr<ClosingPreviews> closing_;
};

LinuxCapture::LinuxCapture(KeptNode& kept)
    : kept_(kept),
      feed_(std::make_unique<UdevFeed>()),
      closing_(std::make_shared<ClosingPreviews>()) {}

LinuxCapture::~LinuxCapture() {
    // A camera that hangs is left to the kernel, which closes it with the process.
    waitForPreviews(std::chrono::seconds(2));
}

bool LinuxCapture::waitForPreviews(std::chrono::milliseconds patience) {
    return closing_->waitForAll(patience);
}

std::size_t LinuxCapture::placeInList(const Attachment& usbDevice) const {
    const auto found = std::ranges::find_if(attached_, [&](const auto& device) {
        const NodeFacts& facts = device->facts();
        return facts.hasVideo && facts.usb && facts.usb->attachment == usbDevice;
    });
    return static_cast<std::size_t>(found - attached_.begin());
}

std::vector<std::shared_ptr<CaptureDevice>> LinuxCapture::devices() {
    // With a listener events are taken when they come, so that each change is announced.
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
        // Events behind a loss are older than the list that is read in their place. It is read when
        // the queue is empty: the kernel goes on dropping events while the queue is full.
        lost = lost || event->change == UdevFeed::Change::overflow;
        if (lost)
            continue;
        const auto known = find(event->facts.syspath);
        if (event->change == UdevFeed::Change::left) {
            if (known)
                remove(known);
        } else if (!known) {
            add(event->facts);
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
            add(facts);
}

void LinuxCapture::add(const NodeFacts& facts) {
    const auto device = std::make_shared<Device>(facts, closing_);
    attached_.push_back(device);
    if (listener_ != nullptr)
        listener_->arrived(device);
}

void LinuxCapture::remove(const std::shared_ptr<Device>& device) {
    std::erase(attached_, device);
    kept_.closeAt(device->facts().devnode);
    if (listener_ != nullptr)
        listener_->left(device);
}

std::shared_ptr<LinuxCapture::Device> LinuxCapture::find(const std::string& syspath) const {
    const auto found = std::ranges::find_if(
        attached_, [&](const auto& device) { return device->facts().syspath == syspath; });
    return found == attached_.end() ? nullptr : *found;
}

}  // namespace platform
