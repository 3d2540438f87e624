#pragma once

#include "platform/linux/devices/NodeFacts.h"
#include "platform/linux/devices/VideoNode.h"

namespace platform {

/// Opens the node that was listed in `node`: 0, or an errno value, with which `node` is of no use.
/// ENODEV also when another device has come to its place; while `node` is open, none can. On any
/// thread.
int openListed(const NodeFacts& listed, VideoNode& node);

}  // namespace platform
