#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/NSObject.h"
#include "platform/NSView.h"

class NSViewController;

/// One action: the name by which the interface file asks for it, and the controller's operation.
struct NSAction {
    std::string_view selector;
    void (*perform)(NSViewController& controller, const NSView& sender);
};

/// The controller of a window. The application loop makes it, connects its outlets to the widgets
/// of the same name and each widget's action to the operation of the named selector, and then
/// calls `viewDidLoad`.
class NSViewController : public NSObject {
  public:
    /// One outlet: its name, and the reference to connect; the controller owns the reference.
    struct Outlet {
        std::string_view name;
        NSView* reference;
    };

    virtual void viewDidLoad() {}
    virtual void setRepresentedObject(std::shared_ptr<NSObject> object) {
        representedObject_ = std::move(object);
    }

    /// Sets the controller's title, which its window shows as its own.
    void setTitle(std::string_view title);

    /// The window gives what is to be called with each new title; empty when the window goes.
    void setTitleHandler(std::function<void(std::string_view)> handler);

    std::span<const Outlet> outlets() const { return outlets_; }
    virtual std::span<const NSAction> actions() const = 0;

  private:
    template <class Widget>
    friend class IBOutlet;

    std::vector<Outlet> outlets_;
    std::function<void(std::string_view)> titleHandler_;
    std::shared_ptr<NSObject> representedObject_;
};

/// A widget reference of a controller, connected to the widget called `name`.
template <class Widget>
class IBOutlet : public Widget {
  public:
    IBOutlet(NSViewController* controller, std::string_view name) {
        controller->outlets_.push_back({name, this});
    }
    IBOutlet(const IBOutlet&) = delete;
    IBOutlet& operator=(const IBOutlet&) = delete;
    ~IBOutlet() = default;
};

namespace platform {

template <auto Operation>
struct ActionOf;

template <class Controller, class Sender, void (Controller::*Operation)(const Sender&)>
struct ActionOf<Operation> {
    static void perform(NSViewController& controller, const NSView& sender) {
        Sender typed;
        typed.connect(sender);
        (static_cast<Controller&>(controller).*Operation)(typed);
    }
};

}  // namespace platform

/// Returns the row that offers `Operation`, a member of the controller, under `selector`.
template <auto Operation>
constexpr NSAction IBAction(std::string_view selector) {
    return {selector, &platform::ActionOf<Operation>::perform};
}
