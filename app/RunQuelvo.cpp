#include "app/RunQuelvo.h"

#include "app/AppDelegate.h"
#include "app/ViewController.h"
#include "camera/UVCCameraControl.h"
#include "devices/CaptureSession.h"
#include "platform/AVCaptureSession.h"
#include "platform/NSApplication.h"

int runQuelvo(int argumentCount, char** arguments) {
    const int status = NSApplicationMain(argumentCount, arguments,
                                         {[] { return std::make_unique<AppDelegate>(); },
                                          [] { return std::make_unique<ViewController>(); }});
    // The entry's back ends go before the process-wide objects do; nothing may outlive them.
    g_captureSession.reset();
    g_uvcCamera.reset();
    return status;
}
