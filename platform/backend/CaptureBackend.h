#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace platform {

/// One picture, which never changes.
struct VideoFrame {
    int width = 0;   ///< pixels
    int height = 0;  ///< pixels

    /// Writes the picture as rows of 32-bit pixels, each 0xFFRRGGBB, into memory that is laid out
    /// for them; a row starts every `bytesPerLine` bytes. Only here is a camera's picture
    /// converted, so one that is never shown costs nothing. On any thread, any number of times.
    std::function<void(std::byte* pixels, int bytesPerLine)> write;
};

/// Takes what a video source delivers. Called on the source's own thread.
class VideoSink {
  public:
    virtual ~VideoSink() = default;

    /// Takes the next picture, at once: the source waits meanwhile.
    virtual void frame(VideoFrame frame) = 0;

    /// Takes a sentence for a person about the pictures, which go on.
    virtual void noted(std::string remark) = 0;

    /// The source has stopped by itself; `reason` is a sentence for a person. Sent at most once.
    virtual void failed(std::string reason) = 0;
};

/// The size in pixels that a preview should have at the most.
struct VideoLimits {
    int width = 0;
    int height = 0;
};

/// An opened capture device. Destroying it stops it.
class VideoSource {
  public:
    virtual ~VideoSource() = default;

    /// Starts to deliver frames to `sink`, which stays valid until `stop` has returned.
    virtual void start(const VideoLimits& limits, VideoSink& sink) = 0;

    /// Stops; no call to the sink is under way or follows after the return. Harmless when stopped.
    virtual void stop() = 0;
};

/// One attached capture device: a camera or a microphone.
class CaptureDevice {
  public:
    virtual ~CaptureDevice() = default;

    /// Identifies the device among those attached, and across unplug and plug at the same port. A
    /// USB camera's ends in its vendor id and product id, four hexadecimal digits each.
    virtual std::string uniqueID() const = 0;

    /// The product's name as a person knows it.
    virtual std::string localizedName() const = 0;

    virtual bool hasVideo() const = 0;

    /// Opens the device. On failure returns null and says why in `error`, in a sentence.
    virtual std::unique_ptr<VideoSource> open(std::string& error) = 0;
};

/// Hears of devices that come and go. Called on the main thread.
class CaptureListener {
  public:
    virtual ~CaptureListener() = default;
    virtual void arrived(std::shared_ptr<CaptureDevice> device) = 0;
    virtual void left(std::shared_ptr<CaptureDevice> device) = 0;
};

/// The capture devices of the machine.
class CaptureBackend {
  public:
    virtual ~CaptureBackend() = default;

    /// Returns the devices now attached, in the system's order. What comes or goes afterwards is
    /// announced to the listener, also to one that is set before the main loop turns: no device is
    /// both in this list and announced, and none is missed.
    virtual std::vector<std::shared_ptr<CaptureDevice>> devices() = 0;

    /// Announces arrivals and departures to `listener` from now on; null ends it. The application
    /// loop exists by then.
    virtual void setListener(CaptureListener* listener) = 0;
};

}  // namespace platform
