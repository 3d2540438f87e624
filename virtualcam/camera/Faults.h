#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "platform/IOReturn.h"
#include "virtualcam/camera/Controls.h"

namespace virtualcam {

/// How a camera misbehaves. What is not set here works.
struct Faults {
    /// Controls whose every request is stalled.
    std::set<ControlId> stalled = {};
    /// Controls of another length than their row's, in bytes: what GET_LEN answers for them, and
    /// how long their values then are in a request.
    std::map<ControlId, std::uint16_t> lengths = {};
    /// Controls whose reads of the value end after so many bytes, the rest missing.
    std::map<ControlId, std::uint16_t> shortReads = {};
    /// How late each answer comes. From `controlTimeout` on, no answer comes at all (ETIMEDOUT).
    std::chrono::milliseconds delay{0};
    /// How many requests are still answered before the camera falls off the bus.
    std::optional<unsigned> vanishesAfter = std::nullopt;
    /// The camera offers no video-control interface.
    bool noVideoControl = false;
    /// What each step of opening returns; errno values.
    IOReturn deviceCreatePlugIn = 0;
    IOReturn deviceQueryInterface = 0;
    IOReturn deviceInterfaces = 0;
    IOReturn interfaceCreatePlugIn = 0;
    IOReturn interfaceQueryInterface = 0;
    IOReturn interfaceOpen = 0;
    /// Why the video cannot be opened, in a sentence; empty: it can.
    std::string videoOpen = {};
};

}  // namespace virtualcam
