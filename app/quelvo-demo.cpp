// The program for the built-in cameras.

#include "app/RunQuelvo.h"
#include "platform/backend/Backends.h"
#include "platform/linux/Sandbox.h"
#include "platform/linux/SystemLog.h"
#include "virtualcam/camera/DemoBus.h"

int main(int argc, char** argv) {
    platform::SystemLog log;
    for (const std::string& kept : platform::enterSandbox())
        log.line(kept);
    virtualcam::DemoBus bus;
    platform::installBackends({&bus.usb(), &bus.capture(), &log});
    return runQuelvo(argc, argv);
}
