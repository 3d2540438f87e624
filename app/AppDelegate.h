#pragma once

#include "platform/NSApplication.h"

/// The application's delegate: closing the one window ends the process.
class AppDelegate : public NSApplicationDelegate {
  public:
    void applicationDidFinishLaunching() override;
    void applicationWillTerminate() override;
    bool applicationShouldTerminateAfterLastWindowClosed() override;
};
