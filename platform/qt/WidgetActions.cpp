#include "platform/qt/WidgetActions.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QComboBox>
#include <QEvent>
#include <algorithm>

#include "platform/NSViewController.h"
#include "platform/qt/WidgetPeer.h"

namespace platform {

struct Actions::Target {
    std::shared_ptr<WidgetPeer> peer;
    const NSAction* action;
};

Actions::Actions(NSViewController& controller, QWidget& window) : controller_(controller) {
    window.installEventFilter(this);
    catchingUp_.callOnTimeout([this] {
        if (--turnsBehind_ == 0)
            catchingUp_.stop();
    });
}

Actions::~Actions() = default;

void Actions::connectAction(QWidget& widget, const NSAction& action) {
    auto peer = std::make_shared<WidgetPeer>(WidgetPeer{&widget, this});
    targets_.push_back(std::make_unique<Target>(Target{std::move(peer), &action}));
    Target& target = *targets_.back();
    if (auto* slider = qobject_cast<QAbstractSlider*>(&widget))
        connectSlider(*slider, target);
    else if (auto* button = qobject_cast<QAbstractButton*>(&widget))
        connect(button, &QAbstractButton::clicked, this, [this, &target] { sendNow(target); });
    else if (auto* list = qobject_cast<QComboBox*>(&widget))
        connect(list, &QComboBox::activated, this, [this, &target] { sendNow(target); });
}

void Actions::connectSlider(QAbstractSlider& slider, Target& target) {
    connect(&slider, &QAbstractSlider::valueChanged, this, [this, &target] { sendSoon(target); });
    connect(&slider, &QAbstractSlider::sliderReleased, this, &Actions::flush);
}

void Actions::settle(const QWidget* widget) {
    if (std::ranges::any_of(waiting_,
                            [&](const Target* target) { return target->peer->widget == widget; }))
        flush();
}

void Actions::flush() {
    while (!waiting_.empty()) {
        const Target* next = waiting_.front();
        waiting_.erase(waiting_.begin());
        performAndCatchUp(*next);
    }
}

bool Actions::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Close)
        flush();
    return QObject::eventFilter(watched, event);
}

void Actions::sendSoon(Target& target) {
    if (turnsBehind_ == 0 && waiting_.empty()) {
        performAndCatchUp(target);
        return;
    }
    // A posted event comes after the input that is there already, and before anything is painted.
    if (waiting_.empty())
        QMetaObject::invokeMethod(this, &Actions::flush, Qt::QueuedConnection);
    if (std::ranges::find(waiting_, &target) == waiting_.end())
        waiting_.push_back(&target);
}

void Actions::performAndCatchUp(const Target& target) {
    // A turn of the event loop may take its timers before the display's events.
    constexpr int kTurns = 2;
    turnsBehind_ = kTurns;
    catchingUp_.start(0);
    perform(target);
}

void Actions::sendNow(Target& target) {
    std::erase(waiting_, &target);
    flush();
    perform(target);
}

void Actions::perform(const Target& target) {
    if (target.peer->widget)
        target.action->perform(controller_, NSView(target.peer));
}

}  // namespace platform
