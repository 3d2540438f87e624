#pragma once

#include <functional>
#include <memory>

#include "platform/NSNotificationCenter.h"
#include "platform/NSObject.h"
#include "platform/NSViewController.h"

/// The running application, as the sender of what its delegate hears.
class NSApplication : public NSObject {};

/// The names of the notifications that an application's delegate hears; they are about no device.
inline constexpr NSNotificationName NSApplicationDidFinishLaunchingNotification =
    "NSApplicationDidFinishLaunchingNotification";
inline constexpr NSNotificationName NSApplicationWillTerminateNotification =
    "NSApplicationWillTerminateNotification";

/// Hears of the application's start and end.
class NSApplicationDelegate {
  public:
    virtual ~NSApplicationDelegate() = default;
    virtual void applicationDidFinishLaunching(const NSNotification& notification) = 0;
    virtual void applicationWillTerminate(const NSNotification& notification) = 0;
    /// Whether closing the last window ends the process.
    virtual bool applicationShouldTerminateAfterLastWindowClosed(NSApplication& sender) = 0;
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
