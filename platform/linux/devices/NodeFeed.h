#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/linux/devices/NodeFacts.h"

namespace platform {

/// Tells which capture nodes there are and what happens to them.
class NodeFeed {
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

    virtual ~NodeFeed() = default;

    /// Can be read when events wait; -1 when there never are any.
    virtual int descriptor() const = 0;

    /// Takes the next waiting event, or nothing. Does not block.
    virtual std::optional<Event> next() = 0;

    /// Returns what is attached now, in the system's order. Every later change is an event.
    virtual std::vector<NodeFacts> attached() = 0;
};

}  // namespace platform
