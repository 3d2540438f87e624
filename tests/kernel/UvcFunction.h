#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "tests/kernel/UsbipServer.h"
#include "tests/kernel/UvcDescriptors.h"
#include "virtualcam/FrameGenerator.h"
#include "virtualcam/VirtualCamera.h"

namespace usbip {

/// A virtual camera as a USB device: descriptors, stream negotiation and video around the camera's
/// own control requests, which reach it unchanged.
class UvcFunction : public UsbFunction {
  public:
    explicit UvcFunction(std::shared_ptr<virtualcam::VirtualCamera> camera);

    ControlReply control(const Setup& setup, std::span<const std::uint8_t> data) override;
    Bytes payload(std::size_t room) override;
    Clock::time_point due() const override;

  private:
    ControlReply standardRequest(const Setup& setup);
    ControlReply descriptor(const Setup& setup) const;
    ControlReply unitRequest(const Setup& setup, std::span<const std::uint8_t> data);
    ControlReply streamRequest(const Setup& setup, std::span<const std::uint8_t> data);
    Bytes negotiated() const;
    void restartPictures();
    void drawPicture();

    const std::shared_ptr<virtualcam::VirtualCamera> camera_;
    const std::unique_ptr<virtualcam::FrameGenerator> generator_;
    std::uint8_t frameIndex_ = 1;  // the negotiated row of kStreamSizes, from 1
    Bytes picture_;                // the picture under way, as YUY2
    std::size_t sent_ = 0;         // how much of it is sent
    std::uint64_t pictures_ = 0;   // drawn so far
    Clock::time_point due_;        // when the next one is to be drawn
};

}  // namespace usbip
