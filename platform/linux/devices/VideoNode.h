#pragma once

#include <sys/types.h>

#include <string>

#include "platform/linux/controls/Ioctl.h"

namespace platform {

/// An open video4linux node; closed with the object.
class VideoNode : public Ioctl {
  public:
    VideoNode() = default;
    VideoNode(const VideoNode&) = delete;
    VideoNode& operator=(const VideoNode&) = delete;
    ~VideoNode() override;

    /// Opens the node at `path` in place of the one held: 0, or an errno value. A node that is
    /// gone is ENODEV, whatever the kernel calls it, and so is one that is not device `number`:
    /// another may have taken the name.
    int open(const std::string& path, dev_t number);

    void close();

    int call(unsigned long request, void* argument) override;

  private:
    int descriptor_ = -1;
};

/// Whether `node` delivers video by itself, and not only in a pipeline that a program sets up;
/// `card` takes the driver's name for the device, which is for the driver to choose and may be any
/// bytes. False when it does not answer.
bool capturesVideo(Ioctl& node, std::string& card);

/// Whether another program streams from `node`: 0, or EBUSY. Leaves the node as it was.
int checkUnused(Ioctl& node);

/// Says in a sentence why the camera at `path` can't be shown; `status` is an errno value.
std::string openFailure(const std::string& path, int status);

/// Looks at the file at `path` without waiting for the camera: empty when it may be opened, or why
/// not, in a sentence.
std::string whyNotOpenable(const std::string& path);

}  // namespace platform
