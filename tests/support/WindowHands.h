#pragma once

#include <functional>
#include <stdexcept>
#include <string>

#include <QAbstractButton>
#include <QComboBox>
#include <QMessageBox>
#include <QSlider>
#include <QTimer>
#include <QWidget>

/// Looks at a window's widgets and works them as its user does. They go by their outlets' names; a
/// wrong name or kind fails the test.
class WindowHands {
  public:
    virtual ~WindowHands() = default;

    virtual QWidget& window() = 0;

    QSlider& slider(const std::string& name) { return *find<QSlider>(name); }
    QComboBox& list(const std::string& name) { return *find<QComboBox>(name); }
    /// A button by its outlet, or by the action that it sends ("OnBtnRestore:").
    QAbstractButton& button(const std::string& name);

    /// The number or the text that a widget shows: a slider, a list, a label or a button's state.
    std::string shown(const std::string& name);
    bool isEnabled(const std::string& name) { return find<QWidget>(name)->isEnabled(); }

    /// The name of the resource image that a button shows, or "" for none of the switch images.
    std::string image(const std::string& name);

    /// Moves a slider as the user does with the keyboard, and lets its action be sent.
    void moveSlider(const std::string& name, int number);
    void choose(const std::string& name, const std::string& title);
    void click(const std::string& name);

    /// Handles events until `condition` holds; false when it does not within some time. Woken by
    /// events alone: what `condition` looks at changes on the main thread.
    static bool waitUntil(const std::function<bool()>& condition);

    template <class Widget>
    Widget* find(const std::string& name) {
        auto* widget = window().findChild<Widget*>(QString::fromStdString(name));
        if (widget == nullptr)
            throw std::runtime_error("no such widget: " + name);
        return widget;
    }
};

/// Answers the next box with the button of this role, or closes it for `InvalidRole`, and keeps
/// what it said.
class NextBox {
  public:
    explicit NextBox(QMessageBox::ButtonRole answer);

    const std::string& said() const { return said_; }

  private:
    QTimer timer_;
    std::string said_;
};
