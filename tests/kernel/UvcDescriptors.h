#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "virtualcam/VirtualCamera.h"

namespace usbip {

using Bytes = std::vector<std::uint8_t>;

/// One size of picture that the camera streams, as uncompressed YUY2.
struct StreamSize {
    std::uint16_t width = 0;
    std::uint16_t height = 0;

    std::uint32_t bytes() const { return std::uint32_t{2} * width * height; }
};

/// The sizes in the order of their descriptors; the first is the one a host takes by itself.
inline constexpr std::array kStreamSizes{StreamSize{640, 480}, StreamSize{320, 240}};

/// Between two pictures, in units of 100 ns. A tenth of a second: the machines that run this are
/// emulated, and slow.
inline constexpr std::uint32_t kFrameInterval = 1'000'000;

/// What the bulk endpoint sends at the most as one payload: the most that the kernel's driver takes
/// with one transfer.
inline constexpr std::uint32_t kMaxPayload = 16384;

inline constexpr std::uint8_t kControlInterface = 0;
inline constexpr std::uint8_t kStreamingInterface = 1;
inline constexpr std::uint8_t kStreamingEndpoint = 0x81;

/// The descriptors of a camera by USB 2.0 and UVC 1.1. A camera model's controls decide what its
/// units declare to support.
Bytes deviceDescriptor(const virtualcam::CameraModel& model);
Bytes configurationDescriptor(const virtualcam::CameraModel& model);

/// String `index` of the device; empty when there is none.
Bytes stringDescriptor(const virtualcam::CameraModel& model, std::uint8_t index);

}  // namespace usbip
