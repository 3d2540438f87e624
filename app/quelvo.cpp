// The program for the attached cameras.

#include "app/RunQuelvo.h"
#include "platform/backend/Backends.h"
#include "platform/linux/LinuxCapture.h"
#include "platform/linux/LinuxUsb.h"
#include "platform/linux/SystemLog.h"

int main(int argc, char** argv) {
    platform::SystemLog log;
    platform::LinuxUsb usb;
    platform::LinuxCapture capture;
    platform::installBackends({&usb, &capture, &log});
    return runQuelvo(argc, argv);
}
