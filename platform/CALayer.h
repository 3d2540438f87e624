#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/NSColor.h"
#include "platform/NSGeometry.h"

namespace platform {
struct VideoFrame;
}

/// Bits of a layer's autoresizing mask: the layer's width or height follows its superlayer's.
inline constexpr unsigned kCALayerWidthSizable = 2;
inline constexpr unsigned kCALayerHeightSizable = 16;

/// A rectangle that a view shows: a background colour, perhaps a picture, and sublayers above.
/// Main thread only.
class CALayer {
  public:
    /// Returns a new, plain layer.
    static std::shared_ptr<CALayer> layer();

    CALayer(const CALayer&) = delete;
    CALayer& operator=(const CALayer&) = delete;
    virtual ~CALayer();

    void setBackgroundColor(const CGColor& color);
    const std::optional<CGColor>& backgroundColor() const { return backgroundColor_; }

    /// Adds `sublayer`, which has no superlayer yet, above the others.
    void addSublayer(const std::shared_ptr<CALayer>& sublayer);
    const std::vector<std::shared_ptr<CALayer>>& sublayers() const { return sublayers_; }

    /// Sets the rectangle in the superlayer's coordinates; sublayers follow by their masks.
    void setFrame(const NSRect& frame);
    const NSRect& frame() const { return frame_; }

    /// Sets which sides follow the superlayer: a sum of the kCALayer... bits.
    void setAutoresizingMask(unsigned mask) { autoresizingMask_ = mask; }

    /// The picture to show within the frame, its aspect ratio kept; null for none.
    virtual std::shared_ptr<const platform::VideoFrame> contents() const;

    /// The text by which a log tells this layer from others.
    std::string description() const;

    /// The view that hosts this layer gives what is to be called with the layer that has changed,
    /// this one or one of those on it; empty when the view lets it go.
    void setDisplayHandler(std::function<void(const CALayer& changed)> handler);

    /// Says that the layer has changed and wants to be drawn again.
    void setNeedsDisplay();

  protected:
    CALayer() = default;
    virtual const char* className() const { return "CALayer"; }

  private:
    void followSuperlayer(double addedWidth, double addedHeight);

    CALayer* superlayer_ = nullptr;
    std::vector<std::shared_ptr<CALayer>> sublayers_;
    std::optional<CGColor> backgroundColor_;
    NSRect frame_;
    unsigned autoresizingMask_ = 0;
    std::function<void(const CALayer&)> displayHandler_;
};
