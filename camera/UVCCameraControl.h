#pragma once

#include <cstdint>
#include <memory>

#include "camera/ControlTable.h"
#include "platform/IOKit.h"

/// The control channel to one camera: the camera's video-control interface, and every request that
/// travels through it. It either has an interface for its whole life or never; without one, every
/// request fails. Statuses are 0 for done and 1 for failed; each failure is logged once.
/// Main thread only; each transfer blocks until the camera answers.
class UVCCameraControl {
  public:
    /// Makes a channel without an interface.
    UVCCameraControl() = default;

    /// Opens the first USB device with these ids. Always returns a channel, with or without an
    /// interface, and stores in `ret`: 0 opened (also when the device has no video-control
    /// interface), 1 no device or no plug-in, 2 no device interface.
    static std::unique_ptr<UVCCameraControl> initWithVendorID(std::int64_t vendorID,
                                                              std::int64_t productID,
                                                              std::int32_t& ret);

    /// Opens the USB device at this place on the bus; without an interface when there is none.
    static std::unique_ptr<UVCCameraControl> initWithLocationID(std::uint32_t locationID);

    UVCCameraControl(const UVCCameraControl&) = delete;
    UVCCameraControl& operator=(const UVCCameraControl&) = delete;

    /// Closes and releases the interface.
    ~UVCCameraControl();

    /// Returns the device's first video-control interface, closed, or null.
    static std::unique_ptr<IOUSBInterfaceStruct190> getControlInferaceWithDeviceInterface(
        const IOUSBDeviceStruct942& deviceInterface);

    /// A note of the caller's own; sent nowhere.
    std::int32_t bAutoFocus() const { return _bAutoFocus; }
    void setBAutoFocus(std::int32_t autoFocus) { _bAutoFocus = autoFocus; }

    // Requests.

    /// Opens the interface, sends one request on the default control pipe and closes it again. A
    /// short reply counts as done.
    std::int32_t sendControlRequest(IOUSBDevRequest controlRequest);

    /// Writes the low `withLength` bytes of `value`, in little-endian order, to selector
    /// `forSelector` of unit `at`. For the vendor unit the camera's own length is used instead. A
    /// length above 8 fails before anything is written.
    std::int8_t setData(std::int64_t value, std::int32_t withLength, std::int32_t forSelector,
                        std::int32_t at);

    /// Reads with the request `code` (GET_CUR, GET_MIN or GET_MAX) into `g_dataBuffer`, and leaves
    /// the number of bytes asked for in `g_length`. That is `withLength`, for which the buffer must
    /// have room. For the vendor unit it is the camera's own length: the buffer's first `g_length`
    /// bytes are cleared before, and a length beyond them fails without being read.
    std::int64_t getDataFor(std::int32_t code, std::int32_t withLength, std::int32_t fromSelector,
                            std::int32_t at);

    /// Reads the control's current value into `g_dataBuffer`, in the table's size.
    std::int64_t getValueForControl(const UVCControlInfo* control);
    /// Writes the control in the table's size.
    std::int8_t setValue(std::int64_t value, const UVCControlInfo* forControl);

    // Dispatch by unit kind and selector; a pair that no control has is answered with 0.

    /// Reads the current value into `g_dataBuffer`, which has room for the control.
    std::int64_t Capture_GetValue(std::int32_t unitKind, std::int32_t MessageID);

    /// Writes the value at `val`. For the vendor unit it is the one signed byte there; for the
    /// others `g_length` little-endian bytes, at most the control's size.
    std::int8_t Capture_SetValue(std::int32_t unitKind, std::int32_t MessageID, const void* val);

    // Single controls by name, in the camera's units; a float loses its fraction, and one that no
    // 64-bit integer can hold counts as 0. Statuses as everywhere. Readers decode the reply; a read
    // that fails counts as a reply of 0.

    /// The least and greatest value that the camera gives (the first 32 bits of a wider control).
    UVCControlRange getRangeForControl(const UVCControlInfo* control);

    std::int8_t setAutoExposure(bool automatic);
    bool getAutoExposure();
    /// The exposure time is 1.0 minus the argument, in 100 microseconds, fraction dropped.
    std::int8_t setExposure(float value);
    float getExposure();
    // Levels of the processing unit; white balance in kelvin.
    std::int8_t setGain(float value);
    float getGain();
    std::int8_t setBrightness(float value);
    float getBrightness();
    std::int8_t setContrast(float value);
    float getContrast();
    std::int8_t setSaturation(float value);
    float getSaturation();
    std::int8_t setSharpness(float value);
    float getSharpness();
    std::int8_t setWhiteBalance(float value);
    float getWhiteBalance();
    std::int8_t setAutoWhiteBalance(bool automatic);
    bool getAutoWhiteBalance();
    std::int8_t SetExpCompSwitch(std::int32_t value);
    std::int32_t GetExpCompSwitch();

    /// Maps v linearly from the first range to the second, without clamping; an empty first range
    /// gives what IEEE 754 arithmetic gives.
    static float mapValue(float v, float fromMin, float max, float toMin, float toMax);

  private:
    bool hasInterface() const;
    std::int64_t readLengthOfControl(std::int32_t selector);
    std::int64_t decodedReply(std::int32_t code, const UVCControlInfo& control);
    std::int8_t setLevel(std::int32_t selector, float value);
    float levelOf(std::int32_t selector);

    [[maybe_unused]] std::int64_t dataBuffer = 0;  ///< reserved
    std::unique_ptr<IOUSBInterfaceStruct190> interface;
    std::int32_t _bAutoFocus = 0;
};

/// The camera that is open; null until the first open, then only replaced.
extern std::unique_ptr<UVCCameraControl> g_uvcCamera;

/// Names the caller's receive buffer for the duration of one read.
extern void* g_dataBuffer;

/// The number of value bytes of a write; for a read of the vendor unit, the room in `g_dataBuffer`
/// on entry; for any read, the number of bytes asked of the camera on return.
extern std::int32_t g_length;
