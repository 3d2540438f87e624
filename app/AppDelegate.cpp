#include "app/AppDelegate.h"

void AppDelegate::applicationDidFinishLaunching(const NSNotification& /*notification*/) {}

void AppDelegate::applicationWillTerminate(const NSNotification& /*notification*/) {}

bool AppDelegate::applicationShouldTerminateAfterLastWindowClosed(NSApplication& /*sender*/) {
    return true;
}
