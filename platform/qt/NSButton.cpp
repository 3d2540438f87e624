#include <QAbstractButton>
#include <QCheckBox>
#include <QRadioButton>
#include <QToolButton>

#include "platform/NSView.h"
#include "platform/qt/Images.h"
#include "platform/qt/WidgetPeer.h"

using platform::change;
using platform::widgetFor;

namespace {

/// Also switches off the exclusive button that is on, which the toolkit refuses to do.
void setChecked(QAbstractButton& button, bool checked) {
    const bool exclusive = button.autoExclusive();
    button.setAutoExclusive(exclusive && checked);
    button.setChecked(checked);
    button.setAutoExclusive(exclusive);
    // Tab stops at the one that is on; the arrows lead to the others.
    if (exclusive && checked)
        for (auto* each : button.parentWidget()->findChildren<QRadioButton*>())
            each->setFocusPolicy(each == &button ? Qt::StrongFocus : Qt::ClickFocus);
}

}  // namespace

void NSButton::setState(int state) const {
    change<QAbstractButton>(peer(),
                            [&](QAbstractButton& button) { setChecked(button, state != 0); });
}

int NSButton::state() const {
    const auto* button = widgetFor<QAbstractButton>(peer());
    return button != nullptr && button->isChecked() ? 1 : 0;
}

void NSButton::setIntValue(int value) const {
    setState(value);
}

void NSButton::setImage(const std::optional<NSImage>& image) const {
    change<QAbstractButton>(peer(), [&](QAbstractButton& button) {
        button.setIcon(image ? platform::loadImage(image->name()) : QIcon());
    });
}

void NSButton::setBordered(bool bordered) const {
    change<QToolButton>(peer(), [&](QToolButton& button) { button.setAutoRaise(!bordered); });
}

void NSButton::setAllowsMixedState(bool allowed) const {
    change<QCheckBox>(peer(), [&](QCheckBox& box) { box.setTristate(allowed); });
}
