#pragma once

#include <functional>
#include <memory>
#include <string>

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QSlider>
#include <QWidget>

#include "app/ViewController.h"
#include "platform/qt/Interface.h"
#include "tests/support/CameraBench.h"

/// The real window with its controller, on a bench with a sane camera, as it is after start-up.
class WindowBench : public CameraBench {
  public:
    explicit WindowBench(virtualcam::CameraModel model = virtualcam::studioCamera(),
                         bool start = true);
    ~WindowBench();

    /// Does what the application loop does at start-up, and forgets nothing of the log.
    void start();

    ViewController& controller() { return *controller_; }
    QWidget& window() { return window_->widget(); }

    /// Presses the open button, and forgets the log and the requests.
    void pressOpen();

    /// The widgets by their outlets' names; a wrong name or kind fails the test.
    QSlider& slider(const char* name) { return *find<QSlider>(name); }
    QComboBox& list(const char* name) { return *find<QComboBox>(name); }
    QAbstractButton& button(const char* name) { return *find<QAbstractButton>(name); }

    /// The button without an outlet that sends this action.
    QAbstractButton& buttonSending(const char* action);

    /// The number or the text that a widget shows: a slider, a list, a label or a button's state.
    std::string shown(const char* name);
    bool isEnabled(const char* name) { return find<QWidget>(name)->isEnabled(); }

    /// Handles events until `condition` holds; false when it does not within some seconds.
    static bool waitUntil(const std::function<bool()>& condition);

  private:
    template <class Widget>
    Widget* find(const char* name) {
        auto* widget = window().findChild<Widget*>(QLatin1String(name));
        if (widget == nullptr)
            throw std::runtime_error(std::string("no such widget: ") + name);
        return widget;
    }

    std::unique_ptr<ViewController> controller_;
    std::unique_ptr<platform::InterfaceWindow> window_;
};
