#pragma once

#include <functional>
#include <memory>

#include "platform/NSViewController.h"

/// Hears of the application's start and end.
class NSApplicationDelegate {
  public:
    virtual ~NSApplicationDelegate() = default;
    virtual void applicationDidFinishLaunching() = 0;
    virtual void applicationWillTerminate() = 0;
    /// Whether closing the last window ends the process.
    virtual bool applicationShouldTerminateAfterLastWindowClosed() = 0;
};

/// The classes that the application loop makes objects of.
struct NSApplicationClasses {
    std::function<std::unique_ptr<NSApplicationDelegate>()> makeDelegate;
    std::function<std::unique_ptr<NSViewController>()> makeViewController;
};

/// Loads the interface file, creates the delegate, the window and its controller, connects them,
/// calls `viewDidLoad`, shows the window and runs until the application ends. Returns the exit
/// status. Implemented by the toolkit's back end.
int NSApplicationMain(int argumentCount, char** arguments, const NSApplicationClasses& classes);
