#include "platform/NSView.h"
#include "platform/qt/WidgetPeer.h"
#include "platform/qt/Widgets.h"

using platform::change;
using platform::ComboBox;
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
