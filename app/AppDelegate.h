#pragma once

#include "platform/NSApplication.h"

/// The application's delegate: closing the one window ends the process.
class AppDelegate : public NSObject, public NSApplicationDelegate {
  public:
    void applicationDidFinishLaunching(const NSNotification& notification) override;
    void applicationWillTerminate(const NSNotification& notification) override;
    bool applicationShouldTerminateAfterLastWindowClosed(NSApplication& sender) override;
};
