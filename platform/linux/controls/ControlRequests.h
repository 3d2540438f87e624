#pragma once

#include "platform/IOReturn.h"
#include "platform/IOUSBTypes.h"
#include "platform/linux/controls/Ioctl.h"

namespace platform {

/// Sends one UVC class request (UVC 1.1, 4.2) through `node`, a capture node of uvcvideo: 0, or an
/// errno value. Sets `wLenDone`.
///
/// The camera terminal and the processing unit are reached by the driver's V4L2 controls, whatever
/// ids the device gives them; every other unit by its own id. Standard controls can be set, and
/// asked for their current value and their limits. A reply is cut to `wLength`. EINVAL: no such
/// standard control or value; ENOENT: no such unit or selector of an extension unit; ENOBUFS: not
/// the control's length; ERANGE: a value that a field has no room for; EBADRQC: another request.
IOReturn performControlRequest(Ioctl& node, IOUSBDevRequest& request);

}  // namespace platform
