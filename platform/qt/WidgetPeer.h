#pragma once

#include <QPointer>
#include <QSignalBlocker>
#include <QString>
#include <QStringDecoder>
#include <QWidget>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "platform/qt/SliderPace.h"

namespace platform {

/// What a widget reference names: the widget, and the pace of its window's sliders, while they
/// live.
struct WidgetPeer {
    QPointer<QWidget> widget;
    QPointer<SliderPace> pace;
};

/// Returns the peer's widget, or null when there is none or it is not a `Widget`.
template <class Widget>
Widget* widgetFor(const std::shared_ptr<WidgetPeer>& peer) {
    return peer ? dynamic_cast<Widget*>(peer->widget.data()) : nullptr;
}

/// Runs `operation` on the peer's widget, if it is a `Widget`, without its action being sent for
/// it. What the user did to the widget before is sent first, so that no change overwrites it.
template <class Widget, class Operation>
void change(const std::shared_ptr<WidgetPeer>& peer, Operation operation) {
    if (peer && peer->pace)
        peer->pace->settle(peer->widget);
    if (auto* widget = widgetFor<Widget>(peer)) {
        const QSignalBlocker quiet(widget);
        operation(*widget);
    }
}

inline QString fromUtf8(std::string_view text) {
    // Keeps U+FEFF at the start, which the toolkit takes away by default: a camera is found again
    // by the name that is shown, and its name may start with anything.
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    return decoder(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())));
}

}  // namespace platform
