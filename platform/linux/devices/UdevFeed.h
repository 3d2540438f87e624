#pragma once

#include <optional>
#include <vector>

#include "platform/linux/devices/NodeFacts.h"
#include "platform/linux/devices/Udev.h"

namespace platform {

/// Tells which capture nodes there are, as udev knows them, and what happens to them. Without udev
/// there are none.
class UdevFeed {
  public:
    enum class Change {
        arrived,   ///< the node is there, perhaps for long
        left,      ///< the node is gone; only its `syspath` is known
        overflow,  ///< events were lost: look at what is attached
    };

    struct Event {
        Change change = Change::overflow;
        NodeFacts facts;
    };

    UdevFeed();

    /// Can be read when events wait; negative when there never are any.
    int descriptor() const;

    /// Takes the next waiting event, or nothing. Does not block.
    std::optional<Event> next();

    /// Returns what is attached now, in the system's order. Every later change is an event.
    std::vector<NodeFacts> attached();

  private:
    UdevPtr udev_;
    UdevMonitorPtr monitor_;
};

}  // namespace platform
