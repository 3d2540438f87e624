#include "platform/qt/Widgets.h"

#include <QEvent>
#include <QLineEdit>
#include <QStyleOptionToolButton>

namespace platform {

ComboBox::ComboBox(QWidget* parent) : QComboBox(parent) {
    setEditable(true);
    setInsertPolicy(NoInsert);
    setCompleter(nullptr);
    lineEdit()->setPlaceholderText(QStringLiteral("Choose a camera"));
    // On Return the toolkit would choose the first of several cameras of one name, and put an item
    // that differs in case only in place of what the user typed.
    disconnect(lineEdit(), &QLineEdit::editingFinished, this, nullptr);
}

void ComboBox::append(const QString& item) {
    const int selected = currentIndex();
    const QString text = currentText();
    addItem(item);
    setCurrentIndex(selected);
    showText(text);
}

void ComboBox::removeAt(int index) {
    const bool wasSelected = index == currentIndex();
    const QString text = currentText();
    removeItem(index);
    if (wasSelected)
        setCurrentIndex(-1);
    showText(text);
}

void ComboBox::showText(const QString& text) {
    // Setting the same text again would move the cursor of a user who is typing.
    if (currentText() != text)
        setEditText(text);
}

void ImageToggle::initStyleOption(QStyleOptionToolButton* option) const {
    QToolButton::initStyleOption(option);
    if (autoRaise())
        option->state &= ~QStyle::State_On;
}

ValueLabel::ValueLabel(QWidget* parent) : QLabel(parent) {
    makeRoom();
}

void ValueLabel::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        makeRoom();
}

void ValueLabel::makeRoom() {
    const QFontMetrics metrics = fontMetrics();
    constexpr int rounding = 2;  // other digits may be wider than zeros
    setFixedSize(metrics.horizontalAdvance(QStringLiteral("-0000000000")) + rounding,
                 metrics.height());
}

}  // namespace platform
