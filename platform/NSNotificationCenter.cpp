#include "platform/NSNotificationCenter.h"

#include <utility>

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

auto NSNotificationCenter::subscribe(Subscription subscription)
    -> std::shared_ptr<const Subscription> {
    auto made = std::make_shared<const Subscription>(std::move(subscription));
    subscriptions_.push_back(made);
    return made;
}
