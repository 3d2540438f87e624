#include "platform/CALayer.h"

#include <fmt/format.h>

#include <utility>

#include "platform/backend/CaptureBackend.h"

std::shared_ptr<CALayer> CALayer::layer() {
    struct PlainLayer : CALayer {};
    return std::make_shared<PlainLayer>();
}

CALayer::~CALayer() {
    for (const auto& sublayer : sublayers_)
        sublayer->superlayer_ = nullptr;
}

void CALayer::setBackgroundColor(const CGColor& color) {
    backgroundColor_ = color;
    setNeedsDisplay();
}

void CALayer::addSublayer(const std::shared_ptr<CALayer>& sublayer) {
    sublayer->superlayer_ = this;
    sublayers_.push_back(sublayer);
    setNeedsDisplay();
}

void CALayer::setFrame(const NSRect& frame) {
    const NSRect before = std::exchange(frame_, frame);
    for (const auto& sublayer : sublayers_)
        sublayer->followSuperlayer(frame.width - before.width, frame.height - before.height);
    setNeedsDisplay();
}

void CALayer::followSuperlayer(double addedWidth, double addedHeight) {
    NSRect frame = frame_;
    if ((autoresizingMask_ & kCALayerWidthSizable) != 0)
        frame.width += addedWidth;
    if ((autoresizingMask_ & kCALayerHeightSizable) != 0)
        frame.height += addedHeight;
    setFrame(frame);
}

std::shared_ptr<const platform::VideoFrame> CALayer::contents() const {
    return nullptr;
}

std::string CALayer::description() const {
    return fmt::format("<{}: {}>", className(), fmt::ptr(this));
}

void CALayer::setDisplayHandler(std::function<void(const CALayer&)> handler) {
    displayHandler_ = std::move(handler);
}

void CALayer::setNeedsDisplay() {
    const CALayer* base = this;
    while (base->superlayer_ != nullptr)
        base = base->superlayer_;
    if (base->displayHandler_)
        base->displayHandler_(*this);
}
