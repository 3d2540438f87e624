#include "tests/support/WindowHands.h"

#include <QApplication>

QAbstractButton& WindowHands::button(const std::string& name) {
    for (auto* candidate : window().findChildren<QAbstractButton*>())
        if (name == candidate->objectName().toStdString() ||
            name == candidate->property("action").toString().toStdString())
            return *candidate;
    throw std::runtime_error("no such button: " + name);
}

std::string WindowHands::shown(const std::string& name) {
    auto* widget = find<QWidget>(name);
    if (const auto* button = qobject_cast<QAbstractButton*>(widget))
        return button->isChecked() ? "on" : "off";
    for (const char* property : {"value", "currentText", "text"})
        if (const QVariant seen = widget->property(property); seen.isValid())
            return seen.toString().toStdString();
    throw std::runtime_error("shows nothing: " + name);
}

std::string WindowHands::image(const std::string& name) {
    const auto drawn = [&](const QIcon& icon) {
        return icon.pixmap(button(name).iconSize()).toImage();
    };
    for (std::string resource : {"button_on.png", "button_off.png"})
        if (drawn(button(name).icon()) == drawn(QIcon((":/" + resource).c_str())))
            return resource;
    return {};
}

void WindowHands::moveSlider(const std::string& name, int number) {
    slider(name).setValue(number);  // by hand: not through the controller's reference
    QCoreApplication::processEvents();
}

void WindowHands::choose(const std::string& name, const std::string& title) {
    QComboBox& chosen = list(name);
    const int index = chosen.findText(QString::fromStdString(title));
    if (index < 0)
        throw std::runtime_error(name + " has no " + title);
    chosen.setCurrentIndex(index);
    emit chosen.activated(index);
    QCoreApplication::processEvents();
}

void WindowHands::click(const std::string& name) {
    button(name).click();
    QCoreApplication::processEvents();
}

bool WindowHands::waitUntil(const std::function<bool()>& condition) {
    bool late = false;
    QTimer deadline;
    deadline.setSingleShot(true);
    deadline.callOnTimeout([&late] { late = true; });
    deadline.start(40'000);  // longer than anything takes, even in a busy emulated machine
    while (!condition() && !late)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return condition();
}

NextBox::NextBox(QMessageBox::ButtonRole answer) {
    timer_.callOnTimeout([this, answer] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box == nullptr)
            return;
        said_ = box->windowTitle().toStdString() + ": " + box->text().toStdString();
        if (answer == QMessageBox::InvalidRole)
            box->close();
        for (auto* button : box->buttons())
            if (box->buttonRole(button) == answer)
                button->click();
    });
    timer_.start(0);
}
