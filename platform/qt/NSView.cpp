#include "platform/NSView.h"

#include <QLabel>

#include "platform/qt/Accessibility.h"
#include "platform/qt/ImageView.h"
#include "platform/qt/WidgetPeer.h"

using platform::change;
using platform::ImageView;
using platform::widgetFor;

void NSControl::setEnabled(bool enabled) const {
    change<QWidget>(peer(), [&](QWidget& widget) { widget.setEnabled(enabled); });
}

void NSTextField::setStringValue(std::string_view text) const {
    change<QLabel>(peer(), [&](QLabel& label) {
        label.setTextFormat(Qt::PlainText);  // the text may come from a camera
        label.setText(platform::fromUtf8(text));
        if (label.focusPolicy() != Qt::NoFocus)  // a number follows its slider, which tells it
            platform::announce(label);
    });
}

void NSImageView::setWantsLayer(bool wanted) const {
    if (!wanted)
        setLayer(nullptr);
}

void NSImageView::setLayer(const std::shared_ptr<CALayer>& layer) const {
    change<ImageView>(peer(), [&](ImageView& view) { view.setLayer(layer); });
}

std::shared_ptr<CALayer> NSImageView::layer() const {
    const auto* view = widgetFor<ImageView>(peer());
    return view != nullptr ? view->layer() : nullptr;
}

void NSImageView::setNeedsDisplay(bool needed) const {
    if (needed)
        change<ImageView>(peer(), [](ImageView& view) { view.update(); });
}

NSRect NSImageView::bounds() const {
    const auto* view = widgetFor<ImageView>(peer());
    if (view == nullptr)
        return {};
    return {0, 0, static_cast<double>(view->width()), static_cast<double>(view->height())};
}
