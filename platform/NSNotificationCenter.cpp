#include "platform/NSNotificationCenter.h"

NSNotificationCenter& NSNotificationCenter::defaultCenter() {
    static NSNotificationCenter center;
    return center;
}

void NSNotificationCenter::postNotification(const NSNotification& notification) {
    std::erase_if(subscriptions_, [](const auto& entry) { return entry.expired(); });
    // A copy, because an observer may subscribe while it is told.
    const auto subscriptions = subscriptions_;
    for (const auto& entry : subscriptions)
        if (const auto subscription = entry.lock();
            subscription && subscription->name == notification.name)
            subscription->deliver(notification);
}
