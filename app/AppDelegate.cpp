#include "app/AppDelegate.h"

void AppDelegate::applicationDidFinishLaunching() {}

void AppDelegate::applicationWillTerminate() {}

bool AppDelegate::applicationShouldTerminateAfterLastWindowClosed() {
    return true;
}
