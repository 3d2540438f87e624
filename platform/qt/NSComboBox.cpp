#include "platform/NSView.h"
#include "platform/qt/WidgetPeer.h"
#include "platform/qt/Widgets.h"

using platform::change;
using platform::ComboBox;
using platform::widgetFor;

void NSComboBox::removeAllItems() const {
    change<ComboBox>(peer(), [](ComboBox& box) { box.clear(); });
}

int NSComboBox::numberOfItems() const {
    const auto* box = widgetFor<ComboBox>(peer());
    return box != nullptr ? box->count() : 0;
}

void NSComboBox::addItemWithObjectValue(std::string_view value) const {
    change<ComboBox>(peer(), [&](ComboBox& box) { box.append(platform::fromUtf8(value)); });
}

void NSComboBox::selectItemAtIndex(int index) const {
    change<ComboBox>(peer(), [&](ComboBox& box) {
        if (index >= 0 && index < box.count())
            box.setCurrentIndex(index);
    });
}

std::string NSComboBox::itemObjectValueAtIndex(int index) const {
    const auto* box = widgetFor<ComboBox>(peer());
    return box != nullptr ? box->itemText(index).toStdString() : std::string();
}

void NSComboBox::removeItemAtIndex(int index) const {
    change<ComboBox>(peer(), [&](ComboBox& box) { box.removeAt(index); });
}

void NSComboBox::setStringValue(std::string_view text) const {
    change<ComboBox>(peer(), [&](ComboBox& box) { box.setEditText(platform::fromUtf8(text)); });
}

std::string NSComboBox::stringValue() const {
    const auto* box = widgetFor<ComboBox>(peer());
    return box != nullptr ? box->currentText().toStdString() : std::string();
}
