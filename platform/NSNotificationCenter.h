#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/AVCaptureDevice.h"
#include "platform/NSObject.h"

/// The name of a kind of notification; a constant text.
using NSNotificationName = std::string_view;

/// One event: its name and the device that it is about, if it is about one.
struct NSNotification {
    NSNotificationName name;
    std::optional<AVCaptureDevice> object;
};

/// Hands notifications to whoever subscribed. Notifications are delivered on the main thread.
class NSNotificationCenter {
  public:
    static NSNotificationCenter& defaultCenter();

    /// From now on calls `selector` of `observer` with each notification called `name`, from any
    /// sender (`object` is always null). The subscription ends when the observer is destroyed. As
    /// long as there is one, the capture back end announces its devices.
    template <class Observer>
    void addObserver(Observer& observer, void (Observer::*selector)(const NSNotification&),
                     NSNotificationName name, std::nullptr_t /*object*/) {
        const auto deliver = [&observer, selector](const auto& sent) {
            (observer.*selector)(sent);
        };
        auto subscription = std::make_shared<const Subscription>(
            Subscription{name, deliver, platform::announceDevices()});
        subscriptions_.push_back(subscription);
        observer.keep(std::move(subscription));
    }

    /// Delivers `notification` to its observers, in the order in which they subscribed. Main
    /// thread.
    void postNotification(const NSNotification& notification);

  private:
    struct Subscription {
        NSNotificationName name;
        std::function<void(const NSNotification&)> deliver;
        std::shared_ptr<const void> announcements;
    };

    std::vector<std::weak_ptr<const Subscription>> subscriptions_;
};
