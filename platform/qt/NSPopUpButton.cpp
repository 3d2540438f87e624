#include "platform/NSView.h"
#include "platform/qt/WidgetPeer.h"
#include "platform/qt/Widgets.h"

using platform::change;
using platform::PopUpButton;
using platform::widgetFor;

void NSPopUpButton::removeAllItems() const {
    change<PopUpButton>(peer(), [](PopUpButton& list) { list.clear(); });
}

void NSPopUpButton::addItemWithTitle(std::string_view title) const {
    change<PopUpButton>(peer(), [&](PopUpButton& list) {
        const QString item = platform::fromUtf8(title);
        if (const int index = list.findText(item); index >= 0)
            list.removeItem(index);
        list.addItem(item);
    });
}

void NSPopUpButton::setTitle(std::string_view title) const {
    change<PopUpButton>(peer(), [&](PopUpButton& list) {
        if (const int index = list.findText(platform::fromUtf8(title)); index >= 0)
            list.setCurrentIndex(index);
    });
}

std::string NSPopUpButton::title() const {
    const auto* list = widgetFor<PopUpButton>(peer());
    return list != nullptr ? list->currentText().toStdString() : std::string();
}
