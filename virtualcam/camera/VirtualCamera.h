#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "platform/IOReturn.h"
#include "platform/IOUSBTypes.h"
#include "virtualcam/camera/Controls.h"
#include "virtualcam/camera/Faults.h"
#include "virtualcam/scene/PictureState.h"

namespace virtualcam {

/// How long the kernel's video driver waits for a control request.
inline constexpr std::chrono::milliseconds controlTimeout{5000};

/// Codes of VC_REQUEST_ERROR_CODE_CONTROL (UVC 1.1, 4.2.1.2).
enum class RequestError : std::uint8_t {
    none = 0x00,
    wrongState = 0x02,
    outOfRange = 0x04,
    invalidUnit = 0x05,
    invalidControl = 0x06,
    invalidRequest = 0x07,
    unknown = 0xFF,
};

/// What makes one camera differ from another.
struct CameraModel {
    std::string name;              ///< the product's name; need not be valid UTF-8
    std::uint16_t vendorID = 0;    ///< USB
    std::uint16_t productID = 0;   ///< USB
    std::uint32_t locationID = 0;  ///< where it is plugged in
    std::string version;           ///< firmware text, at most `versionSize` bytes
    std::vector<ControlRow> controls;
};

/// One request that reached a camera, and what became of it.
struct RequestRecord {
    std::uint8_t bmRequestType = 0;
    std::uint8_t bRequest = 0;
    std::uint16_t wValue = 0;
    std::uint16_t wIndex = 0;
    std::uint16_t wLength = 0;
    std::vector<std::uint8_t> data;  ///< the bytes that were written, or answered
    IOReturn result = 0;             ///< 0, or the errno value
};

/// A camera without hardware: it answers requests by the rules of UVC 1.1, keeps its settings, also
/// while it is unplugged, and moves what its automatic modes hold. All calls are thread-safe.
class VirtualCamera {
  public:
    explicit VirtualCamera(CameraModel model);
    VirtualCamera(const VirtualCamera&) = delete;
    VirtualCamera& operator=(const VirtualCamera&) = delete;
    ~VirtualCamera() = default;

    /// What the camera is; never changes.
    const CameraModel& model() const { return model_; }

    /// Answers one request on the default control pipe and sets its `wLenDone`. Returns 0, EPIPE
    /// (stalled), ETIMEDOUT or ENODEV (fallen off the bus).
    IOReturn controlRequest(IOUSBDevRequest& request);

    /// The requests that reached the camera, the oldest first; at most the last 4096.
    std::vector<RequestRecord> requests() const;
    void clearRequests();

    /// Makes the camera misbehave from the next call on; `{}` mends it.
    void setFaults(Faults faults);
    Faults faults() const;

    /// Replaces what waits while an answer is late, so that a test need not.
    void setWait(std::function<void(std::chrono::milliseconds)> wait);

    /// Called, on the thread of the request, when the camera falls off the bus by itself.
    void setVanished(std::function<void()> vanished);

    /// Starts the camera, as plugging it in does: it is on the bus, and its audio switch acts.
    void powerOn();

    /// Whether the camera has had a microphone since it was started.
    bool hasAudio() const;

    /// Lets the automatic modes act for one picture, and returns what the controls then ask for.
    PictureState nextPicture();

    /// What the controls ask of the picture now.
    PictureState picture() const;

  private:
    /// The integers of one control; the second one is for a control of two.
    using Value = std::array<std::int64_t, 2>;
    using Bytes = std::vector<std::uint8_t>;

    bool vanishNow();
    RequestError answer(IOUSBDevRequest& request);
    RequestError answerErrorCode(IOUSBDevRequest& request) const;
    RequestError read(const ControlRow& row, const Value& value, IOUSBDevRequest& request) const;
    Bytes replyTo(std::uint8_t request, const ControlRow& row, const Value& value) const;
    RequestError write(const ControlRow& row, Value& value, const IOUSBDevRequest& request);
    void restoreVendorDefaults();
    void follow(const ControlRow& row, Value& value) const;

    bool has(ControlId id, std::int64_t value) const;
    bool isHeld(const ControlRow& row) const;
    std::uint16_t lengthOf(const ControlRow& row) const;
    Bytes encode(const ControlRow& row, const Value& value) const;
    PictureState pictureOfControls() const;

    const CameraModel model_;

    mutable std::mutex mutex_;   // guards all below
    std::vector<Value> values_;  // one for each row of the model
    RequestError lastError_ = RequestError::none;
    bool hasAudio_ = false;
    bool gone_ = false;
    std::uint64_t pictures_ = 0;
    Faults faults_;
    std::deque<RequestRecord> requests_;
    std::function<void(std::chrono::milliseconds)> wait_;
    std::function<void()> vanished_;
};

}  // namespace virtualcam
