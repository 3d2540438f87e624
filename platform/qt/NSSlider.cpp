#include <QSlider>
#include <algorithm>
#include <cmath>

#include "platform/NSView.h"
#include "platform/qt/WidgetPeer.h"

using platform::change;
using platform::widgetFor;

void NSSlider::setMinValue(double minimum) const {
    change<QSlider>(peer(), [&](QSlider& slider) { slider.setMinimum(static_cast<int>(minimum)); });
}

void NSSlider::setMaxValue(double maximum) const {
    change<QSlider>(peer(), [&](QSlider& slider) { slider.setMaximum(static_cast<int>(maximum)); });
}

void NSSlider::setNumberOfTickMarks(int count) const {
    change<QSlider>(peer(), [&](QSlider& slider) {
        const double range = slider.maximum() - slider.minimum();
        slider.setTickPosition(count > 1 ? QSlider::TicksBelow : QSlider::NoTicks);
        if (count > 1)
            slider.setTickInterval(std::max(1, static_cast<int>(std::lround(range / (count - 1)))));
    });
}

void NSSlider::setIntValue(int value) const {
    change<QSlider>(peer(), [&](QSlider& slider) { slider.setValue(value); });
}

int NSSlider::intValue() const {
    const auto* slider = widgetFor<QSlider>(peer());
    return slider != nullptr ? slider->value() : 0;
}
