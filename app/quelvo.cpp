// The program for the attached cameras.

#include "app/RunQuelvo.h"
#include "platform/backend/Backends.h"
#include "platform/linux/Sandbox.h"
#include "platform/linux/SystemLog.h"
#include "platform/linux/devices/KeptNode.h"
#include "platform/linux/devices/LinuxCapture.h"
#include "platform/linux/devices/LinuxUsb.h"

int main(int argc, char** argv) {
    platform::SystemLog log;
    for (const std::string& kept : platform::enterSandbox())
        log.line(kept);
    platform::KeptNode node;
    platform::LinuxCapture capture(node);
    platform::LinuxUsb usb(node, capture);
    platform::installBackends({&usb, &capture, &log});
    return runQuelvo(argc, argv);
}
