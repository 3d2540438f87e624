#pragma once

namespace platform {

class CaptureBackend;
class LogSink;
class UsbBackend;

/// The back ends that this process runs on; a null one is absent (no USB devices, no capture
/// devices, no log). The program's entry owns them and chooses them before anything else runs.
struct Backends {
    UsbBackend* usb = nullptr;
    CaptureBackend* capture = nullptr;
    LogSink* log = nullptr;
};

/// Returns the back ends in force.
const Backends& backends();

/// Puts `chosen` in force and returns what was in force before. Main thread only, while no session
/// runs; every back end must outlive its time in force.
Backends installBackends(const Backends& chosen);

}  // namespace platform
