#include "platform/qt/SliderPace.h"

#include <QAbstractSlider>
#include <QEvent>
#include <algorithm>
#include <utility>

namespace platform {

SliderPace::SliderPace(QWidget& window) {
    window.installEventFilter(this);
}

void SliderPace::connectAction(QAbstractSlider& slider, std::function<void()> action) {
    connect(&slider, &QAbstractSlider::valueChanged, this,
            [this, move = Move{&slider, std::move(action)}] { sendSoon(move); });
    connect(&slider, &QAbstractSlider::sliderReleased, this, &SliderPace::flush);
}

void SliderPace::settle(const QWidget* widget) {
    if (waits(widget))
        flush();
}

void SliderPace::flush() {
    while (!waiting_.empty()) {
        const Move next = std::move(waiting_.front());
        waiting_.erase(waiting_.begin());
        next.action();
    }
}

bool SliderPace::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Close)
        flush();
    return QObject::eventFilter(watched, event);
}

bool SliderPace::waits(const QWidget* widget) const {
    return std::ranges::find(waiting_, widget, &Move::slider) != waiting_.end();
}

void SliderPace::sendSoon(const Move& move) {
    // A posted event comes after the input that is there already, and before anything is painted.
    if (waiting_.empty())
        QMetaObject::invokeMethod(this, &SliderPace::flush, Qt::QueuedConnection);
    if (!waits(move.slider))
        waiting_.push_back(move);
}

}  // namespace platform
