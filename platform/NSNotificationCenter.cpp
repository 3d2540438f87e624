#include "platform/NSNotificationCenter.h"

NSNotificationCenter& NSNotificationCenter::defaultCenter() {
    static NSNotificationCenter center;
    return center;
}

void NSNotificationCenter::postNotification(const NSNotification& notification) {
    std::erase_if(observers_, [](const Subscription& entry) { return entry.observer.expired(); });
    // A copy, because an observer may subscribe while it is told.
    const std::vector<Subscription> subscriptions = observers_;
    for (const Subscription& entry : subscriptions)
        if (entry.name == notification.name && !entry.observer.expired())
            entry.deliver(notification);
}
