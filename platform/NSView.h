#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "platform/CALayer.h"
#include "platform/NSGeometry.h"
#include "platform/NSImage.h"

namespace platform {
struct WidgetPeer;
}

/// A light reference to a widget of the window, which owns it. Empty until the interface file
/// connects it. Every operation on an empty reference, or on one whose widget is gone or of
/// another kind, does nothing and reads as 0 or "". Copies name the same widget. Setting anything
/// by program never sends the widget's action. Main thread only. The operations of this header
/// are implemented by the toolkit's back end.
class NSView {
  public:
    NSView() = default;
    explicit NSView(std::shared_ptr<platform::WidgetPeer> peer) : peer_(std::move(peer)) {}

    /// Makes this reference name the same widget as `other`.
    void connect(const NSView& other) { peer_ = other.peer_; }

  protected:
    const std::shared_ptr<platform::WidgetPeer>& peer() const { return peer_; }

  private:
    std::shared_ptr<platform::WidgetPeer> peer_;
};

/// A widget that the user can work.
class NSControl : public NSView {
  public:
    using NSView::NSView;
    void setEnabled(bool enabled) const;
};

/// A slider of whole numbers. It keeps its value within its range, also when the range narrows.
class NSSlider : public NSControl {
  public:
    using NSControl::NSControl;
    void setMinValue(double minimum) const;
    void setMaxValue(double maximum) const;
    /// Spreads `count` tick marks evenly over the range; shows none when there are less than two.
    void setNumberOfTickMarks(int count) const;
    /// Moves the knob to `value`, or to the nearest end of the range.
    void setIntValue(int value) const;
    int intValue() const;
};

/// A text that only displays.
class NSTextField : public NSControl {
  public:
    using NSControl::NSControl;
    void setStringValue(std::string_view text) const;
};

/// A list of which one item is chosen. Holds each title once.
class NSPopUpButton : public NSControl {
  public:
    using NSControl::NSControl;
    void removeAllItems() const;
    /// Appends an item; an item with the same title that is already there is removed first.
    void addItemWithTitle(std::string_view title) const;
    /// Chooses the item with that title; when there is none, the choice stays.
    void setTitle(std::string_view title) const;
    /// The chosen item's title.
    std::string title() const;
};

/// A push button, a check box, a radio button or a two-image toggle.
class NSButton : public NSControl {
  public:
    using NSControl::NSControl;
    /// 0 is off, every other value on.
    void setState(int state) const;
    /// 0 or 1.
    int state() const;
    /// The same as `setState`.
    void setIntValue(int value) const;
    /// Shows the image; none takes the image away.
    void setImage(const std::optional<NSImage>& image) const;
    void setBordered(bool bordered) const;
    /// Lets the user give a check box a third state, neither on nor off; other buttons have none.
    void setAllowsMixedState(bool allowed) const;
};

/// An editable text with a list below it. Equal titles stand as often as they were added, and
/// nothing is ever selected by itself.
class NSComboBox : public NSControl {
  public:
    using NSControl::NSControl;
    void removeAllItems() const;
    int numberOfItems() const;
    void addItemWithObjectValue(std::string_view value) const;
    void selectItemAtIndex(int index) const;
    std::string itemObjectValueAtIndex(int index) const;
    /// Removes an item; the text stays.
    void removeItemAtIndex(int index) const;
    /// Sets the text shown in the box, which need not be an item's.
    void setStringValue(std::string_view text) const;
    std::string stringValue() const;
};

/// An area that shows layers.
class NSImageView : public NSControl {
  public:
    using NSControl::NSControl;
    void setWantsLayer(bool wanted) const;
    /// Puts `layer` in place of the view's layer, and of all that it carried.
    void setLayer(const std::shared_ptr<CALayer>& layer) const;
    std::shared_ptr<CALayer> layer() const;
    void setNeedsDisplay(bool needed) const;
    /// The view's rectangle in its own coordinates; empty at the origin when there is no view.
    NSRect bounds() const;
};
