#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace platform {
class CaptureDevice;
}

/// The kinds of media that a capture device can be asked for.
enum class AVMediaType { video };

inline constexpr AVMediaType AVMediaTypeVideo = AVMediaType::video;

/// The names of the two device notifications; their `object` is the device.
inline constexpr std::string_view AVCaptureDeviceWasConnectedNotification =
    "AVCaptureDeviceWasConnectedNotification";
inline constexpr std::string_view AVCaptureDeviceWasDisconnectedNotification =
    "AVCaptureDeviceWasDisconnectedNotification";

/// One capture device, a camera or a microphone. A light reference; copies name the same device.
class AVCaptureDevice {
  public:
    explicit AVCaptureDevice(std::shared_ptr<platform::CaptureDevice> device);

    /// Returns every capture device now attached, of every media type, in the system's order.
    static std::vector<AVCaptureDevice> devices();

    bool hasMediaType(AVMediaType type) const;

    /// The device's unique identifier; valid UTF-8.
    std::string uniqueID() const;

    /// The device's display name; valid UTF-8 without control characters and marks of direction.
    std::string localizedName() const;

  private:
    friend class AVCaptureDeviceInput;

    std::shared_ptr<platform::CaptureDevice> device_;
};

namespace platform {

/// Posts the two device notifications, as the capture back end in force announces devices, for as
/// long as somebody holds what is returned. The application loop exists and the back end stays.
std::shared_ptr<const void> announceDevices();

}  // namespace platform
