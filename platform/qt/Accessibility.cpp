#include "platform/qt/Accessibility.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAccessibleWidget>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>

#include "platform/qt/Widgets.h"

namespace platform {

namespace {

/// A button that is on or off. To toggle it is to click it: the toolkit's own way sets the state
/// without a click, and does nothing to a radio button that is on already.
class ToggleInterface : public QAccessibleWidget {
  public:
    ToggleInterface(QAbstractButton& button, QAccessible::Role role)
        : QAccessibleWidget(&button, role), button_(button) {}

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = true;
        state.checked = button_.isChecked();
        return state;
    }

    QStringList actionNames() const override {
        QStringList names = QAccessibleWidget::actionNames();
        if (button_.isEnabled())
            names.prepend(toggleAction());
        return names;
    }

    void doAction(const QString& name) override {
        if (name != toggleAction())
            QAccessibleWidget::doAction(name);
        else  // later, as the click may ask the user something while the caller waits
            QMetaObject::invokeMethod(&button_, &QAbstractButton::click, Qt::QueuedConnection);
    }

  private:
    QAbstractButton& button_;
};

QAccessibleInterface* makeInterface(const QString& /*className*/, QObject* object) {
    if (auto* radio = qobject_cast<QRadioButton*>(object))
        return new ToggleInterface(*radio, QAccessible::RadioButton);
    auto* button = qobject_cast<QAbstractButton*>(object);
    if (qobject_cast<QCheckBox*>(object) != nullptr ||
        dynamic_cast<ImageToggle*>(object) != nullptr)
        return new ToggleInterface(*button, QAccessible::CheckBox);
    return nullptr;
}

/// Only a label tells assistive technology what a list is called: the toolkit puts the chosen item
/// in the place of the list's own name.
void nameList(QComboBox& list) {
    const QString name = list.accessibleName();
    auto* label = new QLabel(name, list.parentWidget());
    label->setBuddy(&list);
    label->hide();
    list.view()->setAccessibleName(name);
    if (list.lineEdit() != nullptr)
        list.lineEdit()->setAccessibleName(name);
}

}  // namespace

void installAccessibility() {
    QAccessible::installFactory(makeInterface);
}

void nameLists(QWidget& window) {
    for (auto* list : window.findChildren<QComboBox*>())
        nameList(*list);
}

void announce([[maybe_unused]] QLabel& label) {
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    QAccessibleAnnouncementEvent event(&label, label.text());
    QAccessible::updateAccessibility(&event);
#endif
}

}  // namespace platform
