#pragma once

#include <memory>

class NSView;
class NSViewController;
class QWidget;
struct NSAction;

namespace platform {

class SliderPace;

/// The application's window as the interface file describes it, connected to a controller. The
/// application loop holds one; tests load one of their own. Main thread only.
class InterfaceWindow {
  public:
    /// Loads the interface file, connects the outlets of `controller` to the widgets of the same
    /// name and each widget's action to the controller's operation, and lets the controller's
    /// title be the window's. The window is hidden still and `viewDidLoad` not yet called. The
    /// controller must outlive the window. Null when the interface file cannot be read.
    static std::unique_ptr<InterfaceWindow> load(NSViewController& controller);

    InterfaceWindow(const InterfaceWindow&) = delete;
    InterfaceWindow& operator=(const InterfaceWindow&) = delete;
    ~InterfaceWindow();

    /// The top-level widget; all others are its children and have their outlets' names.
    QWidget& widget() const { return *window_; }

  private:
    InterfaceWindow(NSViewController& controller, std::unique_ptr<QWidget> window);
    NSView reference(QWidget& widget) const;
    void connectOutlets();
    void connectActions();
    void connectAction(QWidget& widget, const NSAction& action);

    NSViewController& controller_;
    std::unique_ptr<QWidget> window_;
    std::unique_ptr<SliderPace> pace_;
};

}  // namespace platform
