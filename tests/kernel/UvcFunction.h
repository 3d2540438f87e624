#pragma once

#include <linux/usb/ch9.h>

#include <chrono>
#include <memory>
#include <vector>

#include "virtualcam/VirtualCamera.h"

namespace usbip {

using Bytes = std::vector<std::uint8_t>;

/// A virtual camera as a USB device: descriptors, stream negotiation and video around the camera's
/// own control requests, which reach it unchanged.
class UvcFunction {
  public:
    explicit UvcFunction(std::shared_ptr<virtualcam::VirtualCamera> camera)
        : camera_(std::move(camera)) {}

    /// Answers on endpoint 0. `data` is what was sent, or zeros in whose place the answer comes.
    /// Returns 0, EPIPE (stalled), ETIMEDOUT (the request never ends) or ENODEV (fallen off).
    IOReturn control(const usb_ctrlrequest& setup, Bytes& data);

    /// Whether the bulk endpoint has more, or how many milliseconds later.
    int pause() const;

    /// Takes the next bytes of the bulk endpoint, at most `room`.
    Bytes payload(std::size_t room);

  private:
    void draw();

    const std::shared_ptr<virtualcam::VirtualCamera> camera_;
    Bytes picture_;                              // the picture under way: its header, and YUY2
    std::size_t sent_ = 0;                       // how much of it is sent
    unsigned pictures_ = 0;                      // drawn so far
    std::chrono::steady_clock::time_point due_;  // when the next one is
};

}  // namespace usbip
