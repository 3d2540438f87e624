#pragma once

#include "platform/linux/devices/NodeFeed.h"
#include "platform/linux/devices/Udev.h"

namespace platform {

/// The capture nodes as udev knows them. Without udev there are none.
class UdevFeed : public NodeFeed {
  public:
    UdevFeed();

    int descriptor() const override;
    std::optional<Event> next() override;
    std::vector<NodeFacts> attached() override;

  private:
    UdevPtr udev_;
    UdevMonitorPtr monitor_;
};

}  // namespace platform
